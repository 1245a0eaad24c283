#include "core/tasks/RecurrenceRule.h"

#include "base/Calendar.h"

#include <algorithm>
#include <chrono>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;

/// More than the calendar has days: longer intervals leave it all the same, and nothing overflows.
constexpr int longestInterval = 4'000'000;
constexpr int monthsOfCalendar = 120'000;
/// 1 January 10000: later dates have no text.
constexpr Instant endOfCalendar = Instant::fromSeconds(253'402'300'800.0);

/// Days from a day that is a `weekday` to the next one that `rule` means; none when it means no day
/// at all. Weeks count from the one of that day: the rest of it belongs to the rule, then the week
/// that comes `weeks` later.
std::optional<int> daysToNextWeekday(
    const RecurrenceRule& rule, int weeks, int weekday, int firstWeekday) {
    const auto isMeant = [&](int placeInWeek) {
        return rule.weekdays.contains((firstWeekday - 1 + placeInWeek) % 7 + 1);
    };
    const int place = (weekday - firstWeekday + 7) % 7;
    for (int later = place + 1; later < 7; ++later) {
        if (isMeant(later)) return later - place;
    }
    for (int first = 0; first < 7; ++first) {
        if (isMeant(first)) return weeks * 7 + first - place;
    }
    return std::nullopt;
}

/// `from` on `day` of the month that comes `months` later, or on that month's last day.
Instant inLaterMonth(LocalTime from, int months, int day, const Calendar& calendar) {
    using std::chrono::month;
    using std::chrono::year;
    const auto reached = year(from.year) / month(static_cast<unsigned>(from.month))
                         + std::chrono::months(std::min(months, monthsOfCalendar));
    from.year = static_cast<int>(reached.year());
    from.month = static_cast<int>(static_cast<unsigned>(reached.month()));
    from.day = std::min(day, daysInMonth(from.year, from.month));
    return calendar.instant(from);
}

/// The next occurrence as the calendar gives it, which stops at its end.
std::optional<Instant> candidateAfter(
    Instant after, const RecurrenceRule& rule, const Calendar& calendar) {
    const int step = std::clamp(rule.interval, 1, longestInterval);
    if (rule.unit == Unit::day) return calendar.addDays(after, step);
    if (rule.unit == Unit::week) {
        if (rule.weekdays.empty()) return calendar.addDays(after, step * 7);
        const auto days =
            daysToNextWeekday(rule, step, calendar.weekday(after), calendar.firstWeekday());
        return days ? std::optional(calendar.addDays(after, *days)) : std::nullopt;
    }
    const LocalTime from = calendar.local(after);
    const int day = rule.dayOfMonth.value_or(from.day);
    if (rule.unit == Unit::month) return inLaterMonth(from, step, day, calendar);
    const int months = step * 12 + rule.monthOfYear.value_or(from.month) - from.month;
    return inLaterMonth(from, months, day, calendar);
}

}  // namespace

RecurrenceRule RecurrenceRule::fromEditor(const EditorState& state, const Calendar& calendar) {
    RecurrenceRule rule{.unit = state.unit, .interval = std::max(state.interval, 1)};
    if (state.unit == Unit::week) rule.weekdays = state.weekdays;
    if (!state.due) return rule;

    const LocalTime due = calendar.local(*state.due);
    if (state.unit == Unit::month || state.unit == Unit::year) rule.dayOfMonth = due.day;
    if (state.unit == Unit::year) rule.monthOfYear = due.month;
    return rule;
}

std::optional<Instant> RecurrenceRule::nextOccurrence(
    Instant after, const Calendar& calendar) const {
    const auto next = candidateAfter(after, *this, calendar);
    if (!next || *next <= after || *next >= endOfCalendar) return std::nullopt;
    return next;
}

std::optional<Instant> RecurrenceRule::catchUp(
    Instant due, Instant now, const Calendar& calendar) const {
    auto caughtUp = nextOccurrence(due, calendar);
    for (int i = 0; i < maximumFurtherOccurrences && caughtUp && *caughtUp <= now; ++i) {
        const auto further = nextOccurrence(*caughtUp, calendar);
        if (!further) break;
        caughtUp = further;
    }
    return caughtUp;
}

Instant RecurrenceRule::firstFittingDay(Instant from, const Calendar& calendar) const {
    if (unit == Unit::week) {
        const int weekday = calendar.weekday(from);
        if (weekdays.contains(weekday)) return from;
        const auto days = daysToNextWeekday(*this, 1, weekday, calendar.firstWeekday());
        return calendar.addDays(from, days.value_or(0));
    }
    if (unit == Unit::day || !dayOfMonth) return from;

    const LocalTime first = calendar.local(from);
    const bool isOneMonth = unit == Unit::year && monthOfYear;
    int months = isOneMonth ? (*monthOfYear - first.month + 12) % 12 : 0;
    const int day = std::min(*dayOfMonth, daysInMonth(first.year, first.month));
    const bool isOver = months == 0 && day < first.day;
    if (isOver) months = isOneMonth ? 12 : 1;
    return inLaterMonth(first, months, *dayOfMonth, calendar);
}

}  // namespace tesserine
