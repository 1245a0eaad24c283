#include "app/tasks/CalendarModel.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskRow.h"
#include "app/tasks/TaskWords.h"
#include "core/tasks/TaskSnapshot.h"

#include <QStringList>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int mostSpoken = 10;

}  // namespace

CalendarModel::CalendarModel(AppEnvironment& environment)
    : environment_(environment),
      day_(environment.calendar().startOfDay(environment.now())),
      date_(environment.calendar().local(day_)) {}

void CalendarModel::show(Span span, Instant day) {
    const Calendar& calendar = environment_.calendar();
    span_ = span;
    day_ = calendar.startOfDay(day);
    date_ = calendar.local(day_);
    const Instant today = environment_.now();
    const auto cells = span == Span::month ? TaskCalendarLayout::monthCells(day_, calendar, today)
                                           : TaskCalendarLayout::weekCells(day_, calendar, today);
    days_.clear();
    for (const CalendarDayCell& cell : cells) {
        days_.push_back(read(cell, span == Span::month ? mostTasksInMonth : mostTasksInWeek));
    }
}

void CalendarModel::reload() { show(span_, environment_.calendar().instant(date_)); }

CalendarDay CalendarModel::read(const CalendarDayCell& cell, std::size_t mostTasks) const {
    const Calendar& calendar = environment_.calendar();
    const TaskWords words(environment_.now(), calendar);
    FetchRequest request = tasksDueOn(cell.date, calendar);
    // What is done must not hide behind "more" what is to be done.
    request.sort.insert(request.sort.begin(), {"completedAt"});
    request.limit = mostTasks;

    CalendarDay day{.cell = cell};
    environment_.context().visitRows<CDTask>(request, [&](const ListedRow& row) {
        const TaskDue due{*row.get(&CDTask::dueDate), row.get(&CDTask::dueHasTime).value_or(false)};
        const bool isCompleted = row.get(&CDTask::completedAt).has_value();
        day.tasks.push_back(
            {.id = row.get(&CDTask::id).value_or(Uuid{}),
             .title = QString::fromStdString(row.get(&CDTask::title).value_or("")),
             .time = due.hasTime ? words.time(due.date) : QString(),
             .priority = taskPriority(row.get(&CDTask::priority).value_or(4)),
             .isCompleted = isCompleted,
             .isOverdue = !isCompleted && words.isOverdue(due),
             .repeats = !row.get(&CDTask::recurrenceRule).value_or("").empty()});
    });
    day.taskCount = day.tasks.size();
    if (day.taskCount == mostTasks) {
        day.taskCount = environment_.context().count<CDTask>(request.predicate);
    }
    return day;
}

std::size_t CalendarModel::dayIndex() const {
    const auto found =
        std::ranges::find(days_, day_, [](const CalendarDay& day) { return day.cell.date; });
    return static_cast<std::size_t>(found - days_.begin());
}

QString CalendarModel::title() const {
    const Calendar& calendar = environment_.calendar();
    const TaskWords words(environment_.now(), calendar);
    if (span_ == Span::month || days_.empty()) return words.month(day_);
    const LocalTime first = calendar.local(days_.front().cell.date);
    const LocalTime last = calendar.local(days_.back().cell.date);
    const QString end = QString("%1 %2").arg(last.day).arg(words.month(days_.back().cell.date));
    if (first.month == last.month) return QString("%1 – %2").arg(first.day).arg(end);
    const QString monthBefore = words.month(days_.front().cell.date);
    const bool isSameYear = first.year == last.year;
    const QString begin = isSameYear ? monthBefore.section(' ', 0, 0) : monthBefore;
    return QString("%1 %2 – %3").arg(first.day).arg(begin, end);
}

QString CalendarModel::spokenDay() const {
    const TaskWords words(environment_.now(), environment_.calendar());
    const std::size_t index = dayIndex();
    if (index >= days_.size()) return words.day(day_);
    const CalendarDay& day = days_[index];
    QStringList parts{words.day(day_)};
    parts += day.taskCount == 1 ? QString("1 task") : QString("%1 tasks").arg(day.taskCount);
    for (const CalendarTask& task : day.tasks) {
        if (parts.size() > mostSpoken) break;
        parts += (task.time.isEmpty() ? QString() : task.time + " ") + shownTitle(task.title);
    }
    return parts.join(", ");
}

void CalendarModel::moveByDays(int days) {
    show(span_, environment_.calendar().addDays(day_, days));
}

void CalendarModel::moveBySpans(int spans) {
    const Calendar& calendar = environment_.calendar();
    show(
        span_,
        span_ == Span::month ? calendar.addMonths(day_, spans)
                             : calendar.addDays(day_, daysInWeek * spans));
}

void CalendarModel::showToday() { show(span_, environment_.now()); }

}  // namespace tesserine::app
