#include "base/Instant.h"

#include "base/Clock.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

namespace tesserine {
namespace {

TEST(Instant, IsWrittenInUTCWithMilliseconds) {
    struct Case {
        std::int64_t milliseconds;
        const char* text;
    };
    for (const auto& [milliseconds, text] : {
             Case{0, "1970-01-01T00:00:00.000Z"},
             Case{-250, "1969-12-31T23:59:59.750Z"},
             Case{978'307'200'000, "2001-01-01T00:00:00.000Z"},
             Case{951'782'399'999, "2000-02-28T23:59:59.999Z"},
             Case{951'782'400'000, "2000-02-29T00:00:00.000Z"},     // leap: divisible by 400
             Case{-2'203'891'200'000, "1900-03-01T00:00:00.000Z"},  // no leap: divisible by 100
             Case{-2'203'891'200'001, "1900-02-28T23:59:59.999Z"},
             Case{-62'167'219'200'000, "0000-01-01T00:00:00.000Z"},
             Case{253'402'300'799'999, "9999-12-31T23:59:59.999Z"},
         }) {
        EXPECT_EQ(Instant::fromMilliseconds(milliseconds).iso(), text);
        EXPECT_EQ(Instant::parseISO(text), Instant::fromMilliseconds(milliseconds)) << text;
    }
}

TEST(Instant, BeyondFourDigitYearsIsWrittenAsTheirLimits) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Instant::fromSeconds(1e15).iso(), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(Instant::fromSeconds(infinity).iso(), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(Instant::fromSeconds(-1e300).iso(), "0000-01-01T00:00:00.000Z");
    EXPECT_EQ(Instant::fromSeconds(std::nan("")).milliseconds(), 0);
}

TEST(Instant, ReadsFractionsAndOffsets) {
    struct Case {
        const char* text;
        const char* utc;
    };
    for (const auto& [text, utc] : {
             Case{"2026-03-14T09:15:00Z", "2026-03-14T09:15:00.000Z"},
             Case{"2026-03-14T09:15:00.5Z", "2026-03-14T09:15:00.500Z"},
             Case{"2026-03-14T09:15:00.123456Z", "2026-03-14T09:15:00.123Z"},
             Case{"2026-03-14T09:15:00+05:30", "2026-03-14T03:45:00.000Z"},
             Case{"2026-01-01T00:30:00-01:00", "2026-01-01T01:30:00.000Z"},
             Case{"2026-01-01T00:30:00+01:00", "2025-12-31T23:30:00.000Z"},
         }) {
        const auto read = Instant::parseISO(text);
        ASSERT_TRUE(read) << text;
        EXPECT_EQ(read->iso(), utc) << text;
    }
}

TEST(Instant, ReadsNoImpossibleDateAndNoOtherForm) {
    for (const char* text : {
             "",
             "2026-02-30T00:00:00Z",
             "2025-02-29T00:00:00Z",
             "2026-13-01T00:00:00Z",
             "2026-00-01T00:00:00Z",
             "2026-01-01T24:00:00Z",
             "2026-01-01T00:60:00Z",
             "2026-01-01T00:00:00",
             "2026-01-01T00:00:00.Z",
             "2026-01-01T00:00:00+24:00",
             "2026-01-01T00:00:00+0100",
             "2026-01-01 00:00:00Z",
             "2026-01-01T00:00:00Z ",
             "26-01-01T00:00:00Z",
             "+026-01-01T00:00:00Z",
         }) {
        EXPECT_FALSE(Instant::parseISO(text)) << text;
    }
}

TEST(Instant, EveryMillisecondSurvivesEveryForm) {
    test::SeededRandom random(20260314);
    constexpr std::int64_t first = -62'167'219'200'000;
    constexpr std::uint64_t span = 315'569'520'000'000;
    for (int i = 0; i < 100'000; ++i) {
        const std::int64_t milliseconds = first + static_cast<std::int64_t>(random.below(span));
        const Instant instant = Instant::fromMilliseconds(milliseconds);
        ASSERT_EQ(instant.milliseconds(), milliseconds);
        ASSERT_EQ(instant.floorToMillisecond(), instant) << milliseconds;
        ASSERT_EQ(Instant::parseISO(instant.iso()), instant) << instant.iso();
        const Instant stored = Instant::fromReferenceSeconds(instant.referenceSeconds());
        ASSERT_EQ(stored.milliseconds(), milliseconds);
    }
}

TEST(Instant, RoundsDownToTheMillisecondBothSidesOfTheEpoch) {
    EXPECT_EQ(Instant::fromSeconds(1.9999).floorToMillisecond(), Instant::fromSeconds(1.999));
    EXPECT_EQ(Instant::fromSeconds(-1.9991).floorToMillisecond(), Instant::fromSeconds(-2.0));
}

TEST(Clock, FixedOneMovesOnlyWhenToldAndWhenWaitedOn) {
    FixedClock clock(Instant::fromSeconds(1000));
    const auto before = clock.monotonic();
    EXPECT_TRUE(clock.sleep(std::chrono::seconds(5), {}));
    EXPECT_EQ(clock.now(), Instant::fromSeconds(1005));
    clock.set(Instant::fromSeconds(10));  // the wall clock may jump back, waiting time may not
    EXPECT_EQ(clock.monotonic() - before, std::chrono::seconds(5));

    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(clock.sleep(std::chrono::seconds(5), stop.get_token()));
    EXPECT_EQ(clock.now(), Instant::fromSeconds(10));
}

TEST(Clock, WaitingOnTheMachinesClockEndsWhenStopped) {
    const SystemClock clock;
    std::stop_source stop;
    std::jthread stopper([&] { stop.request_stop(); });
    EXPECT_FALSE(clock.sleep(std::chrono::hours(1), stop.get_token()));
    EXPECT_TRUE(clock.sleep(std::chrono::milliseconds(1), {}));
    EXPECT_EQ(clock.now(), clock.now().floorToMillisecond());
}

}  // namespace
}  // namespace tesserine
