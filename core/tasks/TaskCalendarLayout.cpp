#include "core/tasks/TaskCalendarLayout.h"

namespace tesserine {
namespace {

/// `count` days from that of `first` on; each begins at its own first instant, whatever the clocks
/// do.
std::vector<CalendarDayCell> cellsFrom(
    Instant first, int count, const Calendar& calendar, Instant today) {
    std::vector<CalendarDayCell> cells;
    for (int i = 0; i < count; ++i) {
        const Instant day = calendar.startOfDay(calendar.addDays(first, i));
        cells.push_back({.date = day, .isToday = calendar.isSameDay(day, today)});
    }
    return cells;
}

}  // namespace

std::vector<CalendarDayCell> TaskCalendarLayout::monthCells(
    Instant date, const Calendar& calendar, Instant today) {
    const Instant first = calendar.startOfMonth(date);
    const LocalTime month = calendar.local(first);
    const int leading = (calendar.weekday(first) - calendar.firstWeekday() + 7) % 7;
    const int weeks = (leading + daysInMonth(month.year, month.month) + 6) / 7;

    auto cells = cellsFrom(calendar.addDays(first, -leading), weeks * 7, calendar, today);
    for (CalendarDayCell& cell : cells) {
        cell.isInDisplayedMonth = calendar.local(cell.date).month == month.month;
    }
    return cells;
}

std::vector<CalendarDayCell> TaskCalendarLayout::weekCells(
    Instant date, const Calendar& calendar, Instant today) {
    return cellsFrom(calendar.startOfWeek(date), 7, calendar, today);
}

}  // namespace tesserine
