#include "sync/SyncSchedule.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

using std::chrono::seconds;

TEST(SyncSchedule, ComesSoonAfterAChangeAndElseEveryFewMinutes) {
    FixedClock clock(Instant{});
    SyncSchedule schedule(clock);
    EXPECT_TRUE(schedule.isDue(1)) << "at the start";
    schedule.succeeded(1);
    EXPECT_FALSE(schedule.isDue(1));
    clock.advance(seconds(299));
    EXPECT_FALSE(schedule.isDue(1));
    clock.advance(seconds(1));
    EXPECT_TRUE(schedule.isDue(1));

    schedule.succeeded(1);
    clock.advance(seconds(2));
    EXPECT_TRUE(schedule.isDue(2)) << "after a quiet time";
    schedule.succeeded(2);
    EXPECT_FALSE(schedule.isDue(3)) << "the next key may be on its way";
    clock.advance(seconds(1));
    EXPECT_FALSE(schedule.isDue(4));
    clock.advance(seconds(1));
    EXPECT_TRUE(schedule.isDue(4)) << "typing on does not put it off for ever";
    schedule.succeeded(4);
    clock.advance(seconds(10));
    schedule.wake();
    schedule.succeeded(5);  // brought only what others changed
    EXPECT_TRUE(schedule.isDue(6));
}

TEST(SyncSchedule, HearsOfChangesAtOnceAndOfTheRestOnceInAWhile) {
    using Kind = LiveNews::Kind;
    FixedClock clock(Instant{});
    SyncSchedule schedule(clock);
    const auto waitAfter = [&](const LiveNews& news) {
        schedule.succeeded(1);
        schedule.hear(news, 7);
        return schedule.untilDue();
    };
    EXPECT_EQ(waitAfter({.kind = Kind::changes, .seq = 8}), seconds(0));
    EXPECT_EQ(waitAfter({.kind = Kind::changes, .seq = 7}), seconds(300)) << "seen already";
    EXPECT_EQ(waitAfter({.kind = Kind::signedOut}), seconds(0));
    EXPECT_EQ(waitAfter({.kind = Kind::closed}), seconds(300));
    EXPECT_EQ(waitAfter({.kind = Kind::opened}), seconds(2));
    clock.advance(seconds(1));
    schedule.hear({.kind = Kind::unknown}, 7);
    EXPECT_EQ(schedule.untilDue(), seconds(1)) << "one pull for all of them";

    schedule.failed(SyncError::offline());
    schedule.hear({.kind = Kind::unknown}, 7);
    EXPECT_EQ(schedule.untilDue(), seconds(5));
    schedule.hear({.kind = Kind::opened}, 7);
    EXPECT_EQ(schedule.untilDue(), seconds(1)) << "the server is there again";
    schedule.failed(SyncError::server({.status = 503, .retryAfter = Seconds(30)}));
    schedule.hear({.kind = Kind::opened}, 7);
    EXPECT_EQ(schedule.untilDue(), seconds(30)) << "it asked for time";
}

TEST(SyncSchedule, TriesAgainAtOnceWhenTheWayMayBeOpenUnlessTheServerAskedForTime) {
    FixedClock clock(Instant{});
    SyncSchedule schedule(clock);
    schedule.succeeded(1);
    schedule.tryAgain();
    EXPECT_TRUE(schedule.isDue(1));
    schedule.failed(SyncError::offline());
    EXPECT_FALSE(schedule.isDue(1));
    schedule.tryAgain();
    EXPECT_TRUE(schedule.isDue(1));
    schedule.failed(SyncError::server({.status = 503, .retryAfter = Seconds(30)}));
    schedule.tryAgain();
    EXPECT_EQ(schedule.untilDue(), seconds(30));
}

TEST(SyncSchedule, WaitsLongerAfterEveryFailureAndAsLongAsTheServerAsks) {
    FixedClock clock(Instant{});
    SyncSchedule schedule(clock);
    const auto pauseAfter = [&](const SyncError& error) {
        schedule.failed(error);
        const auto announced = schedule.untilDue();
        int waited = 0;
        while (!schedule.isDue(1)) {
            clock.advance(seconds(1));
            ++waited;
        }
        EXPECT_EQ(announced, seconds(waited));
        return waited;
    };
    EXPECT_TRUE(schedule.isDue(1));
    EXPECT_EQ(pauseAfter(SyncError::offline()), 5);
    EXPECT_EQ(pauseAfter(SyncError::offline()), 10);
    EXPECT_EQ(pauseAfter(SyncError::server({.status = 503, .retryAfter = Seconds(3)})), 3);
    for (int i = 0; i < 10; ++i) {
        schedule.failed(SyncError::offline());
    }
    EXPECT_EQ(pauseAfter(SyncError::offline()), 900);
    schedule.succeeded(1);
    clock.advance(seconds(300));
    EXPECT_EQ(pauseAfter(SyncError::offline()), 5);
}

}  // namespace
}  // namespace tesserine
