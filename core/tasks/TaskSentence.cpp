#include "base/Calendar.h"
#include "core/tasks/QuickAddParser.h"
#include "core/tasks/TaskService.h"

namespace tesserine {
namespace {

/// The first day that fits the rule, from today on; from tomorrow when its time has passed today.
TaskDue firstDue(
    const RecurrenceRule& rule,
    const std::optional<TimeOfDay>& time,
    Instant now,
    const Calendar& calendar) {
    if (!time) {
        const Instant day = rule.firstFittingDay(calendar.startOfDay(now), calendar);
        return {.date = calendar.startOfDay(day)};
    }
    LocalTime today = calendar.local(now);
    today.hour = time->hour;
    today.minute = time->minute;
    today.second = 0;
    today.millisecond = 0;
    Instant from = calendar.instant(today);
    if (from <= now) from = calendar.addDays(from, 1);
    return {.date = rule.firstFittingDay(from, calendar), .hasTime = true};
}

/// A rule that counts months from a day that not every month has would stay on the 28th after the
/// first February, so it keeps the day it began on.
RecurrenceRule anchored(const RecurrenceRule& rule, Instant due, const Calendar& calendar) {
    using Unit = RecurrenceRule::Unit;
    const bool countsMonths = rule.unit == Unit::month || rule.unit == Unit::year;
    const bool isInEveryMonth = calendar.local(due).day <= 28;
    if (!countsMonths || rule.dayOfMonth || isInEveryMonth) return rule;
    return RecurrenceRule::fromEditor(
        {.unit = rule.unit, .interval = rule.interval, .due = due}, calendar);
}

}  // namespace

TaskDraft TaskService::draftOf(std::string_view sentence, const Calendar& calendar) const {
    return draftOf(QuickAddParser(clock_.now(), calendar).parse(sentence), calendar);
}

TaskDraft TaskService::draftOf(const QuickAddResult& result, const Calendar& calendar) const {
    TaskDraft draft{
        .title = result.title,
        .priority = result.priority.value_or(TaskPriority::p4),
        .recurrence = result.recurrence,
        .labels = result.labels,
        .projectName = result.projectName.value_or("")};
    if (result.dueDate) {
        draft.due = TaskDue{.date = *result.dueDate, .hasTime = result.dueHasTime};
    } else if (result.recurrence) {
        draft.due = firstDue(*result.recurrence, result.dueTime, clock_.now(), calendar);
    }
    if (draft.recurrence && draft.due) {
        draft.recurrence = anchored(*draft.recurrence, draft.due->date, calendar);
    }
    return draft;
}

void TaskService::repeat(CDTask& task, const RecurrenceRule& rule, const Calendar& calendar) const {
    if (!task.dueDate) {
        setDue(task, firstDue(rule, std::nullopt, clock_.now(), calendar), calendar);
    }
    setRecurrence(task, anchored(rule, *task.dueDate, calendar));
}

CDTask& TaskService::createFromSentence(
    StoreContext& context, std::string_view sentence, const Calendar& calendar) const {
    return create(context, draftOf(sentence, calendar));
}

}  // namespace tesserine
