#include "base/EnglishNames.h"
#include "cli/DisplayText.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "cli/TaskInput.h"
#include "cli/TaskPresentation.h"
#include "core/tasks/ReminderPlanner.h"
#include "core/tasks/TaskCalendarLayout.h"

#include <algorithm>
#include <limits>

namespace tesserine::cli {

namespace {

constexpr std::size_t daysPerWeek = 7;
constexpr std::size_t headColumns = 4;
constexpr std::size_t countColumns = 4;

/// A day of the calendar and what is due on it.
struct Day {
    CalendarDayCell cell;
    std::vector<CDTask*> tasks;
};

std::string dateText(Session& session, Instant instant) {
    return session.localTime(instant).substr(0, 10);
}

std::vector<Day> daysOf(Session& session, const std::vector<CalendarDayCell>& cells) {
    std::vector<Day> days;
    days.reserve(cells.size());
    for (const CalendarDayCell& cell : cells) {
        days.push_back(
            {cell, session.context().fetch<CDTask>(tasksDueOn(cell.date, session.calendar()))});
    }
    return days;
}

boost::json::array daysJSON(Session& session, const std::vector<Day>& days) {
    boost::json::array array;
    for (const auto& [cell, tasks] : days) {
        array.push_back(
            {{"date", asJSON(std::optional(cell.date))},
             {"day", dateText(session, cell.date)},
             {"isInDisplayedMonth", cell.isInDisplayedMonth},
             {"isToday", cell.isToday},
             {"tasks", tasksJSON(session, tasks)}});
    }
    return array;
}

std::string shortWeekdayName(int weekday) {
    return std::string(english::shortened(english::weekdayName(weekday)));
}

/// "  14 ": a number or a weekday above it, and behind it room for how much is due.
std::string cellText(const std::string& head, const std::string& count = {}) {
    std::string text(headColumns - std::min(head.size(), headColumns), ' ');
    text += head + count;
    text.append(countColumns - std::min(displayWidth(count), countColumns), ' ');
    return text;
}

/// The day and how many tasks are due on it; today stands in brackets.
std::string cellText(Session& session, const Day& day) {
    std::string number = std::to_string(session.calendar().local(day.cell.date).day);
    if (day.cell.isToday) number = "[" + number + "]";
    return cellText(number, day.tasks.empty() ? "" : "·" + std::to_string(day.tasks.size()));
}

void showGrid(Session& session, const std::vector<Day>& days) {
    Output& output = session.output();
    std::string line;
    for (std::size_t i = 0; i < daysPerWeek; ++i) {
        line += cellText(shortWeekdayName(session.calendar().weekday(days[i].cell.date)));
    }
    output.line(output.styled(line, Style::faint));
    line.clear();
    for (std::size_t i = 0; i < days.size(); ++i) {
        const Style style = days[i].cell.isInDisplayedMonth ? Style::plain : Style::faint;
        line += output.styled(cellText(session, days[i]), style);
        const bool isLastOfWeek = i % daysPerWeek == daysPerWeek - 1;
        if (!isLastOfWeek) continue;
        output.line(line);
        line.clear();
    }
}

void showAgenda(Session& session, const std::vector<Day>& days) {
    for (const Day& day : days) {
        if (day.tasks.empty()) continue;
        Output& output = session.output();
        const int weekday = session.calendar().weekday(day.cell.date);
        output.line("");
        output.line(output.styled(
            shortWeekdayName(weekday) + " " + dateText(session, day.cell.date), Style::strong));
        showTasks(session, day.tasks, {});
    }
}

Instant dayToShow(Session& session, const Arguments& arguments) {
    const auto typed = arguments.wordIfAny(0);
    return typed ? parseDay(session, *typed) : session.now();
}

ExitStatus showDays(Session& session, Instant day, const std::vector<CalendarDayCell>& cells) {
    const auto days = daysOf(session, cells);
    if (session.output().isJSON()) {
        session.output().json(daysJSON(session, days));
        return ExitStatus::done;
    }
    const LocalTime local = session.calendar().local(day);
    session.output().line(session.output().styled(
        std::string(english::monthName(local.month)) + " " + std::to_string(local.year),
        Style::strong));
    showGrid(session, days);
    showAgenda(session, days);
    return ExitStatus::done;
}

ExitStatus showMonth(Session& session, const Arguments& arguments) {
    const Instant day = dayToShow(session, arguments);
    return showDays(
        session, day, TaskCalendarLayout::monthCells(day, session.calendar(), session.now()));
}

ExitStatus showWeek(Session& session, const Arguments& arguments) {
    const Instant day = dayToShow(session, arguments);
    return showDays(
        session, day, TaskCalendarLayout::weekCells(day, session.calendar(), session.now()));
}

boost::json::object planJSON(const ReminderPlan& plan) {
    const bool isTask = plan.kind == ReminderPlan::Kind::task;
    return {
        {"kind", isTask ? "task" : "note"},
        {"fireAt", asJSON(std::optional(plan.fireAt))},
        {"title", plan.title},
        {"body", plan.body},
        {"identifier", plan.identifier()},
        {isTask ? "taskID" : "noteID", plan.ownerID.text()}};
}

ExitStatus listReminders(Session& session, const Arguments& arguments) {
    const auto limit = arguments.integer("limit", 1, std::numeric_limits<int>::max())
                           .value_or(ReminderPlanner::usualLimit);
    StoreContext& context = session.context();
    constexpr std::size_t all = std::numeric_limits<int>::max();
    const ReminderOwners owners{
        .tasks = context.fetch<CDTask>(tasksWithPendingReminder(session.now())),
        .notes = session.notes().upcomingReminders(context, session.now(), all)};
    const auto plans = ReminderPlanner::plans(owners, session.now(), static_cast<int>(limit));
    if (session.output().isJSON()) {
        boost::json::array array;
        for (const ReminderPlan& plan : plans) {
            array.push_back(planJSON(plan));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (plans.empty()) session.remark("There are no reminders to come.");
    Table table{
        .columns = {
            {.title = "WHEN", .style = Style::accent},
            {.title = "OF", .style = Style::faint},
            {.title = "TITLE", .style = Style::strong, .mayShrink = true},
            {.title = "TEXT", .mayShrink = true}}};
    for (const ReminderPlan& plan : plans) {
        table.rows.push_back(
            {session.localTime(plan.fireAt),
             plan.kind == ReminderPlan::Kind::task ? "task" : "note",
             plan.title,
             plan.body});
    }
    session.output().table(table);
    return ExitStatus::done;
}

}  // namespace

std::vector<Command> calendarCommands() {
    const Argument date{.name = "DATE", .isOptional = true};
    return {
        {.path = "calendar month",
         .summary = "Shows a month in whole weeks with the tasks due on each day",
         .arguments = {date},
         .details = "DATE is a month (2026-03), a day (2026-03-14) or a word such as “tomorrow”; "
                    "without it the month is this one.",
         .example = "tesserine calendar month 2026-02 --first-weekday 2",
         .run = showMonth},
        {.path = "calendar week",
         .summary = "Shows a week with the tasks due on each day",
         .arguments = {date},
         .details = "DATE is any day of it; without it the week is this one.",
         .example = "tesserine calendar week 2026-03-14",
         .run = showWeek},
        {.path = "reminders",
         .summary = "Lists the reminders to come of tasks and notes, earliest first",
         .options = {{.name = "limit", .value = "N", .summary = "At most so many (default 60)"}},
         .example = "tesserine reminders --limit 10",
         .run = listReminders}};
}

}  // namespace tesserine::cli
