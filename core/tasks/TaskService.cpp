#include "core/tasks/TaskService.h"

#include "base/Calendar.h"
#include "core/body/PlainText.h"
#include "core/store/StoreContext.h"
#include "core/tasks/Places.h"
#include "core/tasks/TaskLabels.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tesserine {
namespace {

/// A place behind all tasks of the level that `parent` stands for; null is the top.
std::int64_t placeAtEnd(StoreContext& context, const CDTask* parent) {
    std::optional<std::int64_t> highest;
    if (parent != nullptr) {
        for (const CDTask* sibling : parent->subtasks.all()) {
            highest = std::max(highest, sibling->sortIndex.get());
        }
    } else if (
        const CDTask* last = context.fetchFirst<CDTask>(
            {.predicate = {"parent == nil"},
             .sort = {{"sortIndex", SortDescriptor::Order::descending}}})) {
        highest = last->sortIndex.valueOr(0);
    }
    return highest ? placeAfter(*highest) : 0;
}

/// A new task below `parent` with what every copy of a task takes over.
CDTask& insertCopy(StoreContext& context, const CDTask& task, CDTask* parent) {
    const std::int64_t place = placeAtEnd(context, parent);
    auto& copy = context.insert<CDTask>();
    copy.details = task.details;
    copy.project = task.project;
    copy.parent = parent;
    copy.dueDate = task.dueDate;
    copy.dueHasTime = task.dueHasTime;
    copy.priority = task.priority;
    copy.linkedNote = task.linkedNote;
    copy.sortIndex = place;
    return copy;
}

/// When a task that repeats is due after being completed now; none when it does not go on.
std::optional<Instant> nextDue(const CDTask& task, Instant now, const Calendar& calendar) {
    const auto rule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr(""));
    if (!rule || !task.dueDate) return std::nullopt;
    return rule->catchUp(*task.dueDate, now, calendar);
}

void addDays(Attribute<Instant>& instant, int days, const Calendar& calendar) {
    if (instant) instant = calendar.addDays(*instant, days);
}

std::optional<TaskDue> dueOf(const CDTask& task) {
    if (!task.dueDate) return std::nullopt;
    return TaskDue{.date = *task.dueDate, .hasTime = task.dueHasTime.valueOr(false)};
}

void writeDue(CDTask& task, const std::optional<TaskDue>& due) {
    task.dueDate = due ? std::optional(due->date) : std::nullopt;
    task.dueHasTime = due && due->hasTime;
}

std::chrono::milliseconds sinceMidnight(const LocalTime& time) {
    return std::chrono::hours(time.hour) + std::chrono::minutes(time.minute)
           + std::chrono::seconds(time.second) + std::chrono::milliseconds(time.millisecond);
}

/// So far before the due date `to` as `reminder` is before `from`, by the clock on the wall.
Instant movedAlong(
    Instant reminder, const TaskDue& from, const TaskDue& to, const Calendar& calendar) {
    const int days = calendar.daysBetween(from.date, to.date);
    const bool areTimed = from.hasTime && to.hasTime;
    const auto difference =
        areTimed ? sinceMidnight(calendar.local(to.date)) - sinceMidnight(calendar.local(from.date))
                 : std::chrono::milliseconds(0);
    if (difference.count() == 0) return calendar.addDays(reminder, days);

    const auto time = sinceMidnight(calendar.local(reminder)) + difference;
    const auto overMidnight = std::chrono::floor<std::chrono::days>(time);
    const Instant day = calendar.addDays(
        calendar.startOfDay(reminder), days + static_cast<int>(overMidnight.count()));
    const std::chrono::hh_mm_ss clock(time - overMidnight);
    LocalTime moved = calendar.local(day);
    moved.hour = static_cast<int>(clock.hours().count());
    moved.minute = static_cast<int>(clock.minutes().count());
    moved.second = static_cast<int>(clock.seconds().count());
    moved.millisecond = static_cast<int>(clock.subseconds().count());
    return calendar.instant(moved);
}

}  // namespace

void TaskService::checkTitle(const std::string& title) {
    if (title.size() <= maximumTitleCharacters) return;  // no character has less than a byte
    if (text::prefix(title, maximumTitleCharacters).size() < title.size()) {
        throw TaskError::titleTooLong();
    }
}

std::vector<CDTask*> TaskService::tasks(
    StoreContext& context, const View& view, const Calendar& calendar) const {
    return context.fetch<CDTask>(view.request(clock_.now(), calendar));
}

std::vector<TaskSnapshot> TaskService::snapshots(
    StoreContext& context,
    const View& view,
    const Calendar& calendar,
    const text::Collator& collator) const {
    std::vector<TaskSnapshot> result;
    for (const CDTask* task : tasks(context, view, calendar)) {
        result.push_back(TaskSnapshot::of(*task, collator));
    }
    return result;
}

std::size_t TaskService::count(
    StoreContext& context, const View& view, const Calendar& calendar) const {
    return context.count<CDTask>(view.request(clock_.now(), calendar).predicate);
}

CDTask& TaskService::create(StoreContext& context, TaskDraft draft) const {
    checkTitle(draft.title);
    CDTask* parent = draft.parent;
    if (parent != nullptr && parent->parent != nullptr) parent = parent->parent;
    CDProject* project = parent != nullptr ? parent->project : draft.project;
    if (project == nullptr) project = &projects_.findOrCreate(context, draft.projectName);
    const std::int64_t place = placeAtEnd(context, parent);

    auto& task = context.insert<CDTask>();
    if (draft.id) task.id = *draft.id;
    task.title = std::move(draft.title);
    task.details = std::move(draft.details);
    task.project = project;
    task.parent = parent;
    task.linkedNote = draft.linkedNote;
    task.sortIndex = place;
    task.createdAt = clock_.now();
    writeDue(task, draft.due);
    setReminder(task, draft.reminderAt);
    setPriority(task, draft.priority);
    setRecurrence(task, draft.recurrence);
    for (const std::string& name : draft.labels) {
        addLabel(context, task, name);
    }
    return task;
}

CDTask& TaskService::createFromNote(
    StoreContext& context, CDNote& note, std::optional<std::string> title) const {
    const std::string noteTitle = displayTitle(note.title.valueOr(""), note.plainText.valueOr(""));
    return create(
        context,
        {.title = std::move(title).value_or(noteTitle),
         .details = "From note: " + noteTitle,
         .linkedNote = &note});
}

CDTask& TaskService::duplicate(StoreContext& context, const CDTask& task) const {
    CDTask& copy = insertCopy(context, task, task.parent);
    copy.title = duplicateTitle(task.title.valueOr(""));
    copy.reminderAt = task.reminderAt;
    copy.recurrenceRule = task.recurrenceRule;
    copy.createdAt = clock_.now();
    copy.updatedAt = clock_.now();
    return copy;
}

std::string TaskService::duplicateTitle(std::string_view title) {
    const std::string_view trimmed = text::trimmed(title);
    return trimmed.empty() ? "Copy" : std::string(trimmed) + " copy";
}

CDTask* TaskService::complete(StoreContext& context, CDTask& task, const Calendar& calendar) const {
    if (task.completedAt) return nullptr;
    if (const auto next = nextDue(task, clock_.now(), calendar)) {
        CDTask& done = insertCompletedCopy(context, task);
        moveOn(task, *next, calendar);
        return &done;
    }
    task.completedAt = clock_.now();
    task.updatedAt = clock_.now();
    return nullptr;
}

CDTask& TaskService::insertCompletedCopy(StoreContext& context, const CDTask& task) const {
    CDTask& done = insertCopy(context, task, nullptr);
    done.title = task.title;
    done.createdAt = task.createdAt;
    done.completedAt = clock_.now();
    done.updatedAt = clock_.now();
    for (CDTag* label : task.labels.all()) {
        done.labels.add(*label);
    }
    return done;
}

void TaskService::moveOn(CDTask& task, Instant nextDue, const Calendar& calendar) const {
    const int days = calendar.daysBetween(*task.dueDate, nextDue);
    task.dueDate = nextDue;
    addDays(task.reminderAt, days, calendar);
    task.updatedAt = clock_.now();
    for (CDTask* subtask : task.subtasks.all()) {
        addDays(subtask->dueDate, days, calendar);
        addDays(subtask->reminderAt, days, calendar);
        subtask->completedAt = std::nullopt;
        if (subtask->isChanged()) subtask->updatedAt = clock_.now();
    }
}

void TaskService::reopen(CDTask& task) const {
    if (!task.completedAt) return;
    task.completedAt = std::nullopt;
    task.updatedAt = clock_.now();
}

void TaskService::setTitle(CDTask& task, std::string title) const {
    checkTitle(title);
    task.title = std::move(title);
    task.updatedAt = clock_.now();
}

void TaskService::setDetails(CDTask& task, std::string details) const {
    task.details = std::move(details);
    task.updatedAt = clock_.now();
}

void TaskService::setDue(
    CDTask& task, const std::optional<TaskDue>& due, const Calendar& calendar) const {
    const auto before = dueOf(task);
    if (before && due && task.reminderAt) {
        task.reminderAt = movedAlong(*task.reminderAt, *before, *due, calendar);
    }
    writeDue(task, due);
    task.updatedAt = clock_.now();
}

void TaskService::setReminder(CDTask& task, const std::optional<Instant>& at) const {
    task.reminderAt = at;
    task.updatedAt = clock_.now();
}

void TaskService::setPriority(CDTask& task, TaskPriority priority) const {
    task.priority = static_cast<std::int16_t>(priority);
    task.updatedAt = clock_.now();
}

void TaskService::setRecurrence(CDTask& task, const std::optional<RecurrenceRule>& rule) const {
    task.recurrenceRule = rule ? std::optional(rule->storageString()) : std::nullopt;
    task.updatedAt = clock_.now();
}

void TaskService::addLabel(StoreContext& context, CDTask& task, std::string_view name) const {
    CDTag* label = labelNamed(context, name, clock_.now());
    if (label == nullptr) return;
    task.labels.add(*label);
    task.updatedAt = clock_.now();
}

void TaskService::removeLabel(CDTask& task, CDTag& label) const {
    task.labels.remove(label);
    task.updatedAt = clock_.now();
}

void TaskService::moveToProject(StoreContext& context, CDTask& task, CDProject& project) const {
    if (task.parent != nullptr) setParent(context, task, nullptr);
    task.project = &project;
    task.updatedAt = clock_.now();
    for (CDTask* subtask : task.subtasks.all()) {
        subtask->project = &project;
        subtask->updatedAt = clock_.now();
    }
}

bool TaskService::setParent(StoreContext& context, CDTask& task, CDTask* parent) const {
    if (parent != nullptr && parent->parent != nullptr) parent = parent->parent;
    if (parent == &task || (parent != nullptr && !task.subtasks.empty())) return false;
    if (parent == task.parent) return true;
    task.sortIndex = placeAtEnd(context, parent);
    task.parent = parent;
    if (parent != nullptr) task.project = parent->project;
    task.updatedAt = clock_.now();
    return true;
}

void TaskService::reorder(const std::vector<CDTask*>& inNewOrder) const {
    std::vector<std::int64_t> places;
    places.reserve(inNewOrder.size());
    for (const CDTask* task : inNewOrder) {
        places.push_back(task->sortIndex.valueOr(0));
    }
    std::ranges::sort(places);
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (i > 0) places[i] = std::max(places[i], placeAfter(places[i - 1]));
        CDTask& task = *inNewOrder[i];
        if (task.sortIndex == places[i]) continue;
        task.sortIndex = places[i];
        task.updatedAt = clock_.now();
    }
}

void TaskService::remove(StoreContext& context, CDTask& task) const { context.remove(task); }

}  // namespace tesserine
