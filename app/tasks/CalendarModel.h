#pragma once

#include "base/Calendar.h"
#include "base/Uuid.h"
#include "core/tasks/TaskCalendarLayout.h"
#include "core/tasks/TaskService.h"

#include <QString>

#include <cstddef>
#include <vector>

namespace tesserine::app {

class AppEnvironment;

/// A task on its day.
struct CalendarTask {
    Uuid id{};
    QString title{};
    QString time{};  ///< "09:15"; empty when it is due all day
    TaskPriority priority = TaskPriority::p4;
    bool isCompleted = false;
    bool isOverdue = false;
    bool repeats = false;
};

/// A day with its tasks, the first ones read.
struct CalendarDay {
    CalendarDayCell cell{};
    std::vector<CalendarTask> tasks{};
    std::size_t taskCount = 0;  ///< read or not
};

/// What the calendar shows: the days of the month or week around one, with their tasks.
class CalendarModel {
public:
    enum class Span { month, week };
    /// Tasks read of one day; more do not fit anyhow.
    static constexpr std::size_t mostTasksInMonth = 12;
    static constexpr std::size_t mostTasksInWeek = 60;

    explicit CalendarModel(AppEnvironment& environment);

    /// Shows the span that `day` lies in, and marks the day.
    void show(Span span, Instant day);
    /// Reads the tasks again; the marked day stays, also when the zone is another now.
    void reload();

    Span span() const { return span_; }
    Instant day() const { return day_; }
    /// The place of the marked day in `days`.
    std::size_t dayIndex() const;
    const std::vector<CalendarDay>& days() const { return days_; }
    /// The day with up to so many of its tasks.
    CalendarDay read(const CalendarDayCell& cell, std::size_t mostTasks) const;
    /// "March 2026", "9 – 15 March 2026"
    QString title() const;
    /// What a screen reader says of the marked day.
    QString spokenDay() const;

    /// So many days on; the span follows.
    void moveByDays(int days);
    /// So many months or weeks on.
    void moveBySpans(int spans);
    void showToday();

private:
    AppEnvironment& environment_;
    Span span_ = Span::month;
    Instant day_;
    LocalTime date_;  // of that day: the same in every zone
    std::vector<CalendarDay> days_;
};

}  // namespace tesserine::app
