#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskHistory.h"
#include "base/Calendar.h"

#include <set>
#include <utility>

namespace tesserine::app {
namespace {

/// The time of day of `time` on the day of `day`.
Instant onDay(Instant day, Instant time, const Calendar& calendar) {
    LocalTime local = calendar.local(time);
    const LocalTime date = calendar.local(day);
    local.year = date.year;
    local.month = date.month;
    local.day = date.day;
    return calendar.instant(local);
}

}  // namespace

std::vector<CDTask*> TaskCommands::found(const Tasks& tasks) const {
    std::vector<CDTask*> found;
    for (const Uuid& id : tasks) {
        if (auto* const task = environment_.context().find<CDTask>(id)) found.push_back(task);
    }
    return found;
}

void TaskCommands::complete(const Tasks& tasks) const {
    Tasks subtasks;  // those of a task that repeats move on with it
    for (const CDTask* task : found(tasks)) {
        for (const CDTask* subtask : task->subtasks.all()) {
            subtasks.push_back(*subtask->id);
        }
    }
    TaskHistory::of(environment_).record({tasks, std::move(subtasks)}, parent_, [&] {
        Tasks copies;
        for (CDTask* task : found(tasks)) {
            const CDTask* const copy = environment_.tasks().complete(
                environment_.context(), *task, environment_.calendar());
            if (copy != nullptr) copies.push_back(*copy->id);
        }
        return copies;
    });
}

void TaskCommands::changeEach(
    const Tasks& tasks, const std::function<void(CDTask&)>& change) const {
    TaskHistory::of(environment_).record({tasks}, parent_, [&] {
        for (CDTask* task : found(tasks)) {
            change(*task);
        }
        return Tasks{};
    });
}

void TaskCommands::reopen(const Tasks& tasks) const {
    changeEach(tasks, [this](CDTask& task) { environment_.tasks().reopen(task); });
}

void TaskCommands::setDue(const Tasks& tasks, const std::optional<TaskDue>& due) const {
    const Calendar& calendar = environment_.calendar();
    changeEach(tasks, [&](CDTask& task) {
        const bool keepsTime =
            due && !due->hasTime && task.dueDate && task.dueHasTime.valueOr(false);
        const auto kept = keepsTime ? TaskDue{onDay(due->date, *task.dueDate, calendar), true}
                                    : due.value_or(TaskDue{});
        environment_.tasks().setDue(task, due ? std::optional(kept) : std::nullopt, calendar);
    });
}

void TaskCommands::setPriority(const Tasks& tasks, TaskPriority priority) const {
    changeEach(tasks, [&](CDTask& task) { environment_.tasks().setPriority(task, priority); });
}

void TaskCommands::move(const Tasks& tasks, const Uuid& project) const {
    auto* const target = environment_.context().find<CDProject>(project);
    if (target == nullptr) return;
    const auto moved = found(tasks);
    const std::set<const CDTask*> chosen(moved.begin(), moved.end());
    changeEach(tasks, [&](CDTask& task) {
        // A subtask goes with its task, and leaves it only where it is chosen without it.
        if (chosen.contains(task.parent.get())) return;
        environment_.tasks().moveToProject(environment_.context(), task, *target);
    });
}

void TaskCommands::addLabel(const Tasks& tasks, const Uuid& label) const {
    const auto* const added = environment_.context().find<CDTag>(label);
    if (added == nullptr) return;
    for (CDTask* task : found(tasks)) {
        environment_.tasks().addLabel(environment_.context(), *task, added->name.valueOr(""));
    }
    TaskHistory::of(environment_).saveForGood(parent_);
}

void TaskCommands::duplicate(const Tasks& tasks) const {
    for (const CDTask* task : found(tasks)) {
        environment_.tasks().duplicate(environment_.context(), *task);
    }
    TaskHistory::of(environment_).saveForGood(parent_);
}

void TaskCommands::remove(const Tasks& tasks) const {
    for (CDTask* task : found(tasks)) {
        // One that went with its parent a moment ago is still found.
        if (!task->isDeleted()) environment_.tasks().remove(environment_.context(), *task);
    }
    TaskHistory::of(environment_).saveForGood(parent_);
}

void TaskCommands::reorder(const Tasks& inNewOrder) const {
    TaskHistory::of(environment_).record({inNewOrder}, parent_, [&] {
        environment_.tasks().reorder(found(inNewOrder));
        return Tasks{};
    });
}

}  // namespace tesserine::app
