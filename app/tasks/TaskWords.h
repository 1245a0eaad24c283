#pragma once

#include "base/Instant.h"

#include <QString>

#include <optional>

namespace tesserine {
class Calendar;
struct TaskDue;
}  // namespace tesserine

namespace tesserine::app {

inline constexpr int daysInWeek = 7;

/// Dates of tasks in the words of the window, seen from `now`.
class TaskWords {
public:
    TaskWords(Instant now, const Calendar& calendar) : now_(now), calendar_(calendar) {}

    /// For a row: "Today", "Tomorrow 09:15", "Wed 18 Mar", "18 Mar 2027 09:15".
    QString due(const TaskDue& due) const;
    /// For one task: "Tomorrow, Sunday 15 March at 09:15".
    QString longDue(const TaskDue& due) const;
    /// For a group of tasks: "Tomorrow, Sunday 15 March".
    QString day(Instant day) const;
    /// "09:15"
    QString time(Instant instant) const;
    /// "March 2026"
    QString month(Instant instant) const;

    /// A time that has passed, or a day before today.
    bool isOverdue(const TaskDue& due) const;
    bool isToday(Instant instant) const;

private:
    Instant now_;
    const Calendar& calendar_;
};

/// "Sunday"; `weekday` 1 = Sunday … 7 = Saturday.
QString weekdayName(int weekday);
/// "Sun"
QString shortWeekdayName(int weekday);

}  // namespace tesserine::app
