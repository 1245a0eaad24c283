#include "core/tasks/RecurrenceRule.h"

#include "base/Calendar.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;

/// The occurrences that follow `start`, as wall-clock times in the calendar's zone.
std::vector<std::string> walk(
    const RecurrenceRule& rule, const Calendar& calendar, const char* start, int count) {
    std::vector<std::string> times;
    Instant at = calendar.instant(LocalTime::parseISO(start).value());
    for (int i = 0; i < count; ++i) {
        at = rule.nextOccurrence(at, calendar).value();
        times.push_back(calendar.local(at).iso().substr(0, 16));
    }
    return times;
}

using Times = std::vector<std::string>;

TEST(RecurrenceRule, LongMonthDaysAreClampedToTheMonthTheyFallIn) {
    const Calendar calendar("UTC");
    const RecurrenceRule lastDay{.unit = Unit::month, .dayOfMonth = 31};
    EXPECT_EQ(
        walk(lastDay, calendar, "2026-01-31T09:00", 3),
        (Times{"2026-02-28T09:00", "2026-03-31T09:00", "2026-04-30T09:00"}));
    EXPECT_EQ(walk(lastDay, calendar, "2028-01-31T09:00", 1), Times{"2028-02-29T09:00"});
    // Without a day of its own a rule stays where a short month has put it.
    EXPECT_EQ(
        walk({.unit = Unit::month}, calendar, "2026-01-31T09:00", 2),
        (Times{"2026-02-28T09:00", "2026-03-28T09:00"}));
}

}  // namespace
}  // namespace tesserine
