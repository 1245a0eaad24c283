#include "core/services/TrashRetention.h"

#include "core/services/LibraryFixture.h"

namespace tesserine {
namespace {

using Outcome = TrashRetention::Outcome;

class TrashRetentionTest : public test::LibraryFixture {
public:
    TrashRetentionTest() {
        preferences.set(TrashRetention::daysKey, std::int64_t{30});
        preferences.set(TrashRetention::lastRunKey, clock.now().milliseconds());
    }
    void fillTrash(std::size_t expired, std::size_t fresh) {
        for (std::size_t i = 0; i < expired + fresh; ++i) {
            const auto age = i < expired ? days(31) : days(1);
            context.insert<CDNote>().trashedAt = clock.now() - Instant::Duration(age);
        }
        context.save();
    }
    TrashRetention::Result run(bool hasBackup = true) {
        return retention.run(context, [&] {
            ++backupsAsked;
            return hasBackup;
        });
    }

    Preferences preferences = Preferences::inMemory();
    TrashRetention retention{clock, preferences};
    int backupsAsked = 0;
};

TEST_F(TrashRetentionTest, WhatIsDueGoesInBatchesAfterOneBackup) {
    fillTrash(2 * TrashRetention::batchSize + 1, 3);
    const auto result = run();
    EXPECT_EQ(result.outcome, Outcome::done);
    EXPECT_EQ(result.purged, 2 * TrashRetention::batchSize + 1);
    EXPECT_EQ(backupsAsked, 1);
    EXPECT_EQ(context.count<CDNote>(), 3U);
    EXPECT_FALSE(context.hasChanges());

    EXPECT_EQ(run().purged, 0U);
    EXPECT_EQ(backupsAsked, 1) << "nothing due needs no backup";
}

TEST_F(TrashRetentionTest, WithoutABackupAtMostHalfOfTheTrashGoes) {
    fillTrash(8, 2);
    const auto result = run(false);
    EXPECT_EQ(result.purged, 5U);
    EXPECT_EQ(result.expired, 8U);
}

TEST_F(TrashRetentionTest, AClockThatJumpedOnlyLeavesItsTime) {
    struct Case {
        const char* what;
        std::chrono::seconds sinceLast;
        Outcome outcome;
    };
    for (const auto& [what, sinceLast, outcome] : {
             Case{"same moment", std::chrono::seconds(0), Outcome::done},
             Case{"sixty days", days(60), Outcome::done},
             Case{"beyond", days(60) + std::chrono::seconds(1), Outcome::clockNotBelieved},
             Case{"set back", std::chrono::seconds(-1), Outcome::clockNotBelieved},
             Case{"2037", days(4000), Outcome::clockNotBelieved},
             Case{"1970", -days(20'000), Outcome::clockNotBelieved},
         }) {
        SCOPED_TRACE(what);
        const Instant last = clock.now();
        preferences.set(TrashRetention::lastRunKey, last.milliseconds());
        fillTrash(1, 0);
        advance(sinceLast);
        const auto result = run();
        EXPECT_EQ(result.outcome, outcome);
        EXPECT_EQ(context.count<CDNote>(), outcome == Outcome::done ? 0U : 1U);
        EXPECT_EQ(preferences.integer(TrashRetention::lastRunKey), clock.now().milliseconds());
        clock.set(last);
        for (CDNote* left : context.fetch<CDNote>()) {
            context.remove(*left);
        }
    }
}

TEST_F(TrashRetentionTest, TheFirstRunOnlyLeavesItsTime) {
    preferences.remove(TrashRetention::lastRunKey);
    fillTrash(1, 0);
    EXPECT_EQ(run().outcome, Outcome::clockNotBelieved);
    EXPECT_EQ(run().outcome, Outcome::done);
}

TEST_F(TrashRetentionTest, OnlyAWholeNumberOfDaysBelowAHundredYearsIsASetting) {
    fillTrash(1, 0);
    const auto outcomeWith = [&](auto value) {
        preferences.set(TrashRetention::daysKey, value);
        return run().outcome;
    };
    EXPECT_EQ(outcomeWith(std::int64_t{0}), Outcome::notWanted);
    EXPECT_EQ(outcomeWith(std::int64_t{36'500}), Outcome::notWanted);
    EXPECT_EQ(outcomeWith("30"), Outcome::notWanted);
    EXPECT_EQ(outcomeWith(7.5), Outcome::notWanted);
    preferences.remove(TrashRetention::daysKey);
    EXPECT_EQ(run().outcome, Outcome::notWanted);
    EXPECT_EQ(context.count<CDNote>(), 1U);
    EXPECT_EQ(outcomeWith(std::int64_t{36'499}), Outcome::done);
    EXPECT_EQ(context.count<CDNote>(), 1U);
}

TEST_F(TrashRetentionTest, AStopEndsItBetweenBatches) {
    fillTrash(1, 0);
    std::stop_source source;
    source.request_stop();
    const auto result = retention.run(
        context, [] { return true; }, source.get_token());
    EXPECT_EQ(result.outcome, Outcome::stopped);
    EXPECT_EQ(context.count<CDNote>(), 1U);
}

}  // namespace
}  // namespace tesserine
