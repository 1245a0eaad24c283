#include "base/Calendar.h"

#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <memory>
#include <stdexcept>

namespace tesserine {
namespace {

Instant utc(const char* text) { return Instant::parseISO(text).value(); }

std::string wall(const Calendar& calendar, Instant instant) {
    return calendar.local(instant).iso();
}

TEST(Calendar, WallClockTimesInGapsMoveForwardAndInOverlapsAreTheFirst) {
    struct Case {
        const char* zone;
        const char* local;
        const char* utc;
    };
    for (const auto& [zone, local, expected] : {
             Case{"UTC", "2026-03-11T10:00:00", "2026-03-11T10:00:00.000Z"},
             Case{"Europe/Berlin", "2026-03-29T01:59:59", "2026-03-29T00:59:59.000Z"},
             Case{"Europe/Berlin", "2026-03-29T02:30:00", "2026-03-29T01:30:00.000Z"},  // gap
             Case{"Europe/Berlin", "2026-03-29T03:00:00", "2026-03-29T01:00:00.000Z"},
             Case{"Europe/Berlin", "2026-10-25T02:30:00", "2026-10-25T00:30:00.000Z"},  // twice
             Case{"Europe/Berlin", "2026-10-25T03:00:00", "2026-10-25T02:00:00.000Z"},
             Case{"America/New_York", "2060-07-04T12:00", "2060-07-04T16:00:00.000Z"},
             Case{"Asia/Kolkata", "2026-01-01T00:00", "2025-12-31T18:30:00.000Z"},
             Case{"Australia/Lord_Howe", "2026-10-04T02:15", "2026-10-03T15:45:00.000Z"},  // half
             Case{
                 "Europe/Berlin", "1880-01-01T00:53:28", "1880-01-01T00:00:00.000Z"},  // local mean
         }) {
        const auto fields = LocalTime::parseISO(local);
        ASSERT_TRUE(fields) << local;
        EXPECT_EQ(Calendar(zone).instant(*fields).iso(), expected) << zone << " " << local;
    }
}

TEST(Calendar, DaysBeginWhenTheirFirstMomentExists) {
    const Calendar saoPaulo("America/Sao_Paulo");
    // Midnight of 4 November 2018 was skipped.
    EXPECT_EQ(
        wall(saoPaulo, saoPaulo.startOfDay(utc("2018-11-04T12:00:00Z"))), "2018-11-04T01:00:00");
    const Calendar apia("Pacific/Apia");
    // 30 December 2011 did not happen.
    EXPECT_EQ(wall(apia, apia.startOfDay(utc("2011-12-30T12:00:00Z"))), "2011-12-31T00:00:00");
    EXPECT_EQ(apia.daysBetween(utc("2011-12-29T12:00:00Z"), utc("2011-12-31T12:00:00Z")), 3);

    const Calendar berlin("Europe/Berlin");
    EXPECT_TRUE(berlin.isSameDay(utc("2026-03-28T23:00:00Z"), utc("2026-03-29T21:59:59Z")));
    EXPECT_FALSE(berlin.isSameDay(utc("2026-03-29T21:59:59Z"), utc("2026-03-29T22:00:00Z")));
    EXPECT_EQ(berlin.daysBetween(utc("2026-03-29T22:00:00Z"), utc("2026-03-28T12:00:00Z")), -2);
}

TEST(Calendar, WeeksBeginOnTheDayHandedIn) {
    const Instant wednesday = utc("2026-03-11T12:00:00Z");
    EXPECT_EQ(Calendar("UTC").weekday(wednesday), 4);
    EXPECT_EQ(Calendar("UTC").weekday(utc("1969-12-28T12:00:00Z")), 1);  // before the epoch
    for (const auto& [first, start] : {
             std::pair{1, "2026-03-08T00:00:00.000Z"},
             std::pair{2, "2026-03-09T00:00:00.000Z"},
             std::pair{4, "2026-03-11T00:00:00.000Z"},
             std::pair{5, "2026-03-05T00:00:00.000Z"},
             std::pair{7, "2026-03-07T00:00:00.000Z"},
         }) {
        EXPECT_EQ(Calendar("UTC", first).startOfWeek(wednesday).iso(), start);
    }
    EXPECT_EQ(Calendar("UTC").startOfMonth(wednesday).iso(), "2026-03-01T00:00:00.000Z");
}

TEST(Calendar, ArithmeticKeepsTheWallClockAndEndsAtTheMonthsEnd) {
    const Calendar berlin("Europe/Berlin");
    const auto at = [&](const char* text) {
        return berlin.instant(LocalTime::parseISO(text).value());
    };
    EXPECT_EQ(wall(berlin, berlin.addDays(at("2026-03-28T09:00"), 1)), "2026-03-29T09:00:00");
    EXPECT_EQ(wall(berlin, berlin.addDays(at("2026-03-28T02:30"), 1)), "2026-03-29T03:30:00");
    EXPECT_EQ(wall(berlin, berlin.addDays(at("2024-03-01T09:00"), -1)), "2024-02-29T09:00:00");
    EXPECT_EQ(wall(berlin, berlin.addMonths(at("2026-01-31T09:00"), 1)), "2026-02-28T09:00:00");
    EXPECT_EQ(wall(berlin, berlin.addMonths(at("2026-01-31T09:00"), -2)), "2025-11-30T09:00:00");
    EXPECT_EQ(wall(berlin, berlin.addMonths(at("2026-01-31T09:00"), -13)), "2024-12-31T09:00:00");
    EXPECT_EQ(wall(berlin, berlin.addYears(at("2024-02-29T09:00"), 1)), "2025-02-28T09:00:00");
    EXPECT_EQ(berlin.longDate(at("2026-03-14T23:59")), "14 March 2026");

    // The second 02:30 of the day is not moved to the first by adding nothing.
    const Instant second = utc("2026-10-25T01:30:00Z");
    EXPECT_EQ(wall(berlin, second), "2026-10-25T02:30:00");
    EXPECT_EQ(berlin.addDays(second, 0), second);
    EXPECT_EQ(berlin.addMonths(second, 0), second);
}

TEST(Calendar, SurvivesAbsurdInstantsAndCounts) {
    const Calendar berlin("Europe/Berlin");
    for (const double seconds : {1e300, -1e300, 1e13, -1e13}) {
        const Instant absurd = Instant::fromSeconds(seconds);
        EXPECT_NO_THROW(berlin.startOfWeek(absurd));
        EXPECT_NO_THROW(berlin.addDays(absurd, INT32_MAX));
        EXPECT_NO_THROW(berlin.addYears(absurd, INT32_MIN));
        EXPECT_NO_THROW(berlin.addMonths(absurd, INT32_MAX));
    }
}

TEST(Calendar, AgreesWithTheFullCalendarOnRandomInstants) {
    test::SeededRandom random(1);
    for (const char* zone :
         {"Europe/Berlin", "America/New_York", "Asia/Kolkata", "Pacific/Apia", "Africa/Cairo"}) {
        const Calendar calendar(zone);
        UErrorCode status = U_ZERO_ERROR;
        icu::GregorianCalendar full(
            icu::TimeZone::createTimeZone(icu::UnicodeString(zone)),
            icu::Locale::getRoot(),
            status);
        full.setGregorianChange(-1e18, status);
        ASSERT_TRUE(U_SUCCESS(status));
        for (int i = 0; i < 3000; ++i) {
            // From 1800 to 2300.
            constexpr std::int64_t first = -5'364'662'400;
            const auto seconds = first + static_cast<std::int64_t>(random.below(15'778'476'000));
            const Instant instant = Instant::fromMilliseconds(seconds * 1000);
            full.setTime(static_cast<double>(seconds) * 1000, status);
            const LocalTime local = calendar.local(instant);
            ASSERT_EQ(local.year, full.get(UCAL_EXTENDED_YEAR, status)) << instant.iso();
            ASSERT_EQ(local.month, full.get(UCAL_MONTH, status) + 1) << instant.iso();
            ASSERT_EQ(local.day, full.get(UCAL_DATE, status)) << instant.iso();
            ASSERT_EQ(local.hour, full.get(UCAL_HOUR_OF_DAY, status)) << instant.iso();
            ASSERT_EQ(local.minute, full.get(UCAL_MINUTE, status)) << instant.iso();
            ASSERT_EQ(calendar.weekday(instant), full.get(UCAL_DAY_OF_WEEK, status));

            const Instant back = calendar.instant(local);
            ASSERT_LE(back, instant) << "an overlap is read as its first time";
            ASSERT_EQ(calendar.local(back), local) << instant.iso();
        }
    }
}

TEST(Calendar, KnowsTheZonesOfTheDatabaseOnly) {
    for (const char* zone : {"UTC", "Europe/Berlin", "America/Argentina/Buenos_Aires", "EST5EDT"}) {
        EXPECT_TRUE(Calendar::isZone(zone)) << zone;
    }
    for (const char* zone :
         {"", "Mars/Base", "GMT+3", "GMT+03:00", "europe/berlin", "Etc/Unknown"}) {
        EXPECT_FALSE(Calendar::isZone(zone)) << zone;
        EXPECT_THROW(Calendar{zone}, std::invalid_argument) << zone;
    }
    EXPECT_TRUE(Calendar::isZone(Calendar::systemZone()));
}

TEST(LocalTime, ReadsNoImpossibleDate) {
    EXPECT_EQ(LocalTime::parseISO("2024-02-29T23:59:59")->iso(), "2024-02-29T23:59:59");
    EXPECT_EQ(LocalTime::parseISO("2024-02-29T23:59")->iso(), "2024-02-29T23:59:00");
    for (const char* text :
         {"",
          "2025-02-29T00:00",
          "2025-04-31T00:00",
          "2025-01-01",
          "2025-01-01T24:00",
          "2025-01-01T00:00:00Z",
          "2025-01-01T00:00:"}) {
        EXPECT_FALSE(LocalTime::parseISO(text)) << text;
    }
    EXPECT_EQ(daysInMonth(1900, 2), 28);
    EXPECT_EQ(daysInMonth(2000, 2), 29);
}

}  // namespace
}  // namespace tesserine
