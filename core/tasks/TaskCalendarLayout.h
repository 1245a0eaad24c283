#pragma once

#include "base/Calendar.h"

#include <vector>

namespace tesserine {

/// A day in the task calendar.
struct CalendarDayCell {
    Instant date{};                  ///< the first instant of the day
    bool isInDisplayedMonth = true;  ///< false for the neighbouring months' days around a month
    bool isToday = false;

    friend bool operator==(const CalendarDayCell&, const CalendarDayCell&) = default;
};

/// The days that the task calendar shows. Holds no state and knows no tasks.
class TaskCalendarLayout {
public:
    /// The month that contains `date` in whole weeks, which begin on the calendar's first weekday:
    /// 28, 35 or 42 cells.
    static std::vector<CalendarDayCell> monthCells(
        Instant date, const Calendar& calendar, Instant today);
    /// The seven days of the week that contains `date`, all of them displayed.
    static std::vector<CalendarDayCell> weekCells(
        Instant date, const Calendar& calendar, Instant today);
};

}  // namespace tesserine
