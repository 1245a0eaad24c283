#include "core/tasks/RecurrenceRule.h"

#include "base/Calendar.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;

Instant at(const Calendar& calendar, const char* wallClock) {
    return calendar.instant(LocalTime::parseISO(wallClock).value());
}

std::string minuteOf(const Calendar& calendar, std::optional<Instant> instant) {
    return instant ? calendar.local(*instant).iso().substr(0, 16) : "none";
}

RecurrenceRule rule(const std::string& stored) {
    return RecurrenceRule::fromStorageString("unit=" + stored).value();
}

/// The occurrences after `start`, in the calendar's wall-clock time, as many as asked for.
std::string walk(
    const std::string& stored, const Calendar& calendar, const char* start, int count = 1) {
    std::string times;
    std::optional<Instant> occurrence = at(calendar, start);
    for (int i = 0; i < count && occurrence; ++i) {
        occurrence = rule(stored).nextOccurrence(*occurrence, calendar);
        times += (i == 0 ? "" : ", ") + minuteOf(calendar, occurrence);
    }
    return times;
}

TEST(RecurrenceRule, EveryUnitMovesByItsInterval) {
    struct Case {
        const char* rule;
        const char* from;
        const char* next;
    };
    for (const auto& [rule, from, next] : {
             Case{"day", "2026-12-31T23:59", "2027-01-01T23:59"},
             Case{"day;interval=3", "2028-02-27T08:00", "2028-03-01T08:00"},
             Case{"week", "2026-12-28T08:00", "2027-01-04T08:00"},
             Case{"week;interval=2", "2026-02-16T08:00", "2026-03-02T08:00"},
             Case{"month;interval=13", "2026-01-15T08:00", "2027-02-15T08:00"},
             Case{"month;dayOfMonth=5", "2026-12-20T08:00", "2027-01-05T08:00"},
             Case{"year;interval=4", "2024-02-29T08:00", "2028-02-29T08:00"},
             Case{"year;dayOfMonth=1;monthOfYear=1", "2026-12-31T08:00", "2027-01-01T08:00"},
             // The day is the one of the date before, not of the clamped year's February.
             Case{"year;monthOfYear=3", "2024-02-29T08:00", "2025-03-29T08:00"},
             Case{"year;dayOfMonth=31", "2026-04-30T08:00", "2027-04-30T08:00"},
         }) {
        EXPECT_EQ(walk(rule, Calendar("UTC"), from), next) << rule;
    }
}

TEST(RecurrenceRule, LongMonthDaysAreClampedToTheMonthTheyFallIn) {
    struct Case {
        const char* rule;
        const char* from;
        const char* next;
    };
    for (const auto& [rule, from, next] : {
             Case{"month;dayOfMonth=31", "2026-01-31T09:00", "2026-02-28T09:00, 2026-03-31T09:00"},
             Case{"month;dayOfMonth=31", "2028-01-31T09:00", "2028-02-29T09:00, 2028-03-31T09:00"},
             Case{
                 "year;dayOfMonth=29;monthOfYear=2",
                 "2026-02-28T09:00",
                 "2027-02-28T09:00, 2028-02-29T09:00"},
             // Without a day of its own a rule stays where a short month has put it.
             Case{"month", "2026-01-31T09:00", "2026-02-28T09:00, 2026-03-28T09:00"},
             Case{"year;interval=2", "2024-02-29T09:00", "2026-02-28T09:00, 2028-02-28T09:00"},
         }) {
        EXPECT_EQ(walk(rule, Calendar("UTC"), from, 2), next) << rule;
    }
}

TEST(RecurrenceRule, WeeksCountFromTheCalendarsFirstWeekday) {
    struct Case {
        const char* weekdays;
        int firstWeekday;
        const char* from;
        const char* next;
    };
    for (const auto& [weekdays, firstWeekday, from, next] : {
             Case{"1,2", 1, "2026-03-01T09:00", "2026-03-02T09:00, 2026-03-15T09:00"},
             Case{"1,2", 2, "2026-03-01T09:00", "2026-03-09T09:00, 2026-03-15T09:00"},
             Case{"2,5", 2, "2026-03-09T09:00", "2026-03-12T09:00, 2026-03-23T09:00"},
             // From a day the rule does not mean, the rest of its week still counts.
             Case{"2,5", 1, "2026-03-11T09:00", "2026-03-12T09:00, 2026-03-23T09:00"},
             Case{"2,5", 1, "2026-03-13T09:00", "2026-03-23T09:00, 2026-03-26T09:00"},
             Case{"7", 7, "2026-03-14T09:00", "2026-03-28T09:00, 2026-04-11T09:00"},
         }) {
        const std::string rule = std::string("week;interval=2;weekdays=") + weekdays;
        EXPECT_EQ(walk(rule, Calendar("UTC", firstWeekday), from, 2), next) << rule;
    }
}

TEST(RecurrenceRule, TheWallClockStaysAcrossClockChanges) {
    struct Case {
        const char* zone;
        const char* rule;
        const char* from;
        const char* next;
    };
    constexpr const char* berlin = "Europe/Berlin";
    constexpr const char* newYork = "America/New_York";
    constexpr const char* lordHowe = "Australia/Lord_Howe";
    for (const auto& [zone, rule, from, next] : {
             Case{berlin, "day", "2026-03-28T09:00", "2026-03-29T09:00, 2026-03-30T09:00"},
             Case{berlin, "day", "2026-10-24T02:30", "2026-10-25T02:30, 2026-10-26T02:30"},
             // A skipped time moves forward, and nothing remembers the time that was wished.
             Case{berlin, "day", "2026-03-28T02:30", "2026-03-29T03:30, 2026-03-30T03:30"},
             Case{newYork, "day", "2026-03-07T02:30", "2026-03-08T03:30, 2026-03-09T03:30"},
             Case{newYork, "day", "2026-10-31T01:30", "2026-11-01T01:30, 2026-11-02T01:30"},
             Case{lordHowe, "day", "2026-10-03T02:15", "2026-10-04T02:45, 2026-10-05T02:45"},
             Case{lordHowe, "day", "2026-04-04T01:45", "2026-04-05T01:45, 2026-04-06T01:45"},
             // Passing over the day of the change is no landing in its gap.
             Case{
                 berlin,
                 "week;weekdays=2,5",
                 "2026-03-26T02:30",
                 "2026-03-30T02:30, 2026-04-02T02:30"},
             Case{
                 berlin,
                 "month;interval=2;dayOfMonth=30",
                 "2026-01-29T02:30",
                 "2026-03-30T02:30, 2026-05-30T02:30"},
         }) {
        EXPECT_EQ(walk(rule, Calendar(zone), from, 2), next) << zone << " " << from;
    }
    // Of a time that occurs twice, the first.
    const Calendar calendar(berlin);
    EXPECT_EQ(
        rule("day").nextOccurrence(at(calendar, "2026-10-24T02:30"), calendar)->iso(),
        "2026-10-25T00:30:00.000Z");
}

TEST(RecurrenceRule, EndsWithTheCalendarAndDoesNotHang) {
    const Calendar calendar("Europe/Berlin");
    EXPECT_EQ(walk("day", calendar, "9999-12-30T09:00", 9), "9999-12-31T09:00, none");
    for (const char* const unit : {"day", "week", "week;weekdays=2", "month", "year"}) {
        const std::string hostile = std::string(unit) + ";interval=2147483647";
        EXPECT_EQ(walk(hostile, calendar, "2026-03-14T09:00"), "none");
        for (const double seconds : {1e300, -1e300, 1e13, -1e13}) {
            const Instant absurd = Instant::fromSeconds(seconds);
            EXPECT_NO_THROW(rule(hostile).nextOccurrence(absurd, calendar));
        }
    }
}

/// The rule of weeks as one would do it by hand: one day at a time, counting weeks.
std::optional<Instant> weekWalk(
    const RecurrenceRule& rule, Instant after, const Calendar& calendar) {
    const Instant week = calendar.startOfWeek(after);
    for (int days = 1; days <= (rule.interval + 1) * 7; ++days) {
        const Instant candidate = calendar.addDays(after, days);
        const int weeks = calendar.daysBetween(week, calendar.startOfWeek(candidate)) / 7;
        if (rule.weekdays.contains(calendar.weekday(candidate)) && weeks % rule.interval == 0) {
            return candidate;
        }
    }
    return std::nullopt;
}

RecurrenceRule anyRule(test::SeededRandom& random) {
    const auto upTo = [&](std::uint64_t most) { return static_cast<int>(random.below(most)) + 1; };
    RecurrenceRule rule{.unit = static_cast<Unit>(random.below(4)), .interval = upTo(5)};
    if (rule.unit == Unit::week) {
        for (int count = upTo(8) - 1; count > 0; --count) {
            rule.weekdays.insert(upTo(7));
        }
    }
    const bool hasDay = rule.unit == Unit::month || rule.unit == Unit::year;
    if (hasDay && random.below(2) == 1) rule.dayOfMonth = upTo(31);
    if (rule.unit == Unit::year && random.below(2) == 1) rule.monthOfYear = upTo(12);
    return rule;
}

TEST(RecurrenceRule, RandomRulesAreLaterFitTheirDaysAndSurviveStorage) {
    test::SeededRandom random(20260314);
    for (const char* zone :
         {"UTC", "Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Asia/Kolkata"}) {
        for (int i = 0; i < 2000; ++i) {
            const Calendar calendar(zone, static_cast<int>(random.below(7)) + 1);
            const RecurrenceRule rule = anyRule(random);
            const auto minutes = static_cast<std::int64_t>(random.below(60LL * 24 * 366 * 100));
            const Instant after = Instant::fromMilliseconds(minutes * 60'000);
            const auto next = rule.nextOccurrence(after, calendar);
            SCOPED_TRACE(rule.storageString() + " after " + after.iso() + " in " + zone);
            ASSERT_TRUE(next && *next > after);
            if (!rule.weekdays.empty()) {
                ASSERT_EQ(*next, weekWalk(rule, after, calendar));
            }
            const LocalTime from = calendar.local(after);
            const LocalTime to = calendar.local(*next);
            if (rule.dayOfMonth) {
                ASSERT_EQ(to.day, std::min(*rule.dayOfMonth, daysInMonth(to.year, to.month)));
            }
            if (rule.monthOfYear) {
                ASSERT_EQ(to.month, *rule.monthOfYear);
            }
            const int later = (to.hour - from.hour) * 60 + to.minute - from.minute;
            ASSERT_TRUE(later == 0 || later == 60 || later == 30) << to.iso();
            ASSERT_EQ(RecurrenceRule::fromStorageString(rule.storageString()), rule);
        }
    }
}

TEST(RecurrenceRule, CatchingUpStopsAtTheFirstOccurrenceAfterNow) {
    struct Case {
        const char* rule;
        const char* due;
        const char* now;
        const char* next;
    };
    for (const auto& [stored, due, now, next] : {
             Case{"day", "2025-03-14T09:00", "2026-03-14T08:59", "2026-03-14T09:00"},
             Case{"day", "2025-03-14T09:00", "2026-03-14T09:00", "2026-03-15T09:00"},  // not later
             Case{"day", "2026-03-20T09:00", "2026-03-14T09:00", "2026-03-21T09:00"},  // done early
             // 1 + 500 occurrences and no more: the last one stands, although it is over.
             Case{"day", "2026-01-01T09:00", "2027-05-17T08:59", "2027-05-17T09:00"},
             Case{"day", "2026-01-01T09:00", "2027-05-17T09:00", "2027-05-17T09:00"},
             Case{"day", "2026-01-01T09:00", "2030-01-01T09:00", "2027-05-17T09:00"},
             Case{
                 "month;dayOfMonth=31", "2026-01-31T09:00", "2026-04-01T09:00", "2026-04-30T09:00"},
             Case{"day", "9999-12-29T09:00", "9999-12-31T20:00", "9999-12-31T09:00"},
             Case{"day", "9999-12-31T09:00", "9999-12-31T20:00", "none"},
         }) {
        const Calendar calendar("Europe/Berlin");
        const auto caughtUp = rule(stored).catchUp(at(calendar, due), at(calendar, now), calendar);
        EXPECT_EQ(minuteOf(calendar, caughtUp), next) << "due " << due << ", now " << now;
    }
}

TEST(RecurrenceRule, TheFirstFittingDayMayBeTheDayItself) {
    struct Case {
        const char* rule;
        const char* from;
        const char* first;
    };
    for (const auto& [stored, from, first] : {
             Case{"week;weekdays=2,3,4,5,6", "2026-03-13T09:00", "2026-03-13T09:00"},
             Case{"week;weekdays=2,3,4,5,6", "2026-03-14T09:00", "2026-03-16T09:00"},
             // The first day is no matter of the interval.
             Case{"week;interval=3;weekdays=2", "2026-03-17T09:00", "2026-03-23T09:00"},
             Case{"month;dayOfMonth=31", "2026-02-10T09:00", "2026-02-28T09:00"},
             Case{"month;interval=3;dayOfMonth=31", "2026-02-28T09:00", "2026-02-28T09:00"},
             Case{"month;dayOfMonth=9", "2026-12-10T09:00", "2027-01-09T09:00"},
             Case{"year;dayOfMonth=1;monthOfYear=1", "2026-01-01T09:00", "2026-01-01T09:00"},
             Case{"year;dayOfMonth=1;monthOfYear=1", "2026-01-02T09:00", "2027-01-01T09:00"},
             Case{"year;dayOfMonth=5", "2026-03-14T09:00", "2026-04-05T09:00"},
             Case{"week", "2026-03-14T09:00", "2026-03-14T09:00"},
             Case{"month", "2026-03-14T09:00", "2026-03-14T09:00"},
             Case{"day;interval=2", "2026-03-14T09:00", "2026-03-14T09:00"},
         }) {
        const Calendar calendar("America/New_York", 2);
        const Instant day = rule(stored).firstFittingDay(at(calendar, from), calendar);
        EXPECT_EQ(minuteOf(calendar, day), first) << stored << " from " << from;
    }
}

TEST(RecurrenceRule, AnEditorsRuleTakesItsDayFromTheDueDateInTheZone) {
    const auto due = Instant::parseISO("2026-01-31T23:30:00Z");  // 1 February in Berlin
    struct Case {
        RecurrenceRule::EditorState state;
        const char* storage;
    };
    for (const auto& [state, storage] : {
             Case{{Unit::day, 2, {1, 2}, due}, "unit=day;interval=2"},
             Case{{Unit::week, 1, {6, 2}, due}, "unit=week;interval=1;weekdays=2,6"},
             Case{{Unit::month, 1, {2}, due}, "unit=month;interval=1;dayOfMonth=1"},
             Case{{Unit::year, 1, {2}, due}, "unit=year;interval=1;dayOfMonth=1;monthOfYear=2"},
             Case{{Unit::year, 0, {}, {}}, "unit=year;interval=1"},
         }) {
        const Calendar berlin("Europe/Berlin");
        EXPECT_EQ(RecurrenceRule::fromEditor(state, berlin).storageString(), storage);
    }
}

}  // namespace
}  // namespace tesserine
