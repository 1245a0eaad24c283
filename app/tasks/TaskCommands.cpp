#include "app/tasks/TaskCommands.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskHistory.h"
#include "base/Calendar.h"

#include <algorithm>
#include <iterator>
#include <set>

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

TaskCommands::Tasks TaskCommands::subtasksOf(const Tasks& tasks) const {
    Tasks subtasks;
    for (const CDTask* task : found(tasks)) {
        for (const CDTask* subtask : task->subtasks.all()) {
            subtasks.push_back(*subtask->id);
        }
    }
    return subtasks;
}

void TaskCommands::complete(const Tasks& tasks) const {
    // Those of a task that repeats move on with it.
    TaskHistory::of(environment_).record({tasks, subtasksOf(tasks)}, parent_, [&] {
        TaskHistory::Made made;
        for (CDTask* task : found(tasks)) {
            const CDTask* const copy = environment_.tasks().complete(
                environment_.context(), *task, environment_.calendar());
            if (copy != nullptr) made.completedCopies.push_back(*copy->id);
        }
        return made;
    });
}

void TaskCommands::changeEach(
    const Tasks& tasks, const std::function<void(CDTask&)>& change) const {
    TaskHistory::of(environment_).record({tasks}, parent_, [&] {
        for (CDTask* task : found(tasks)) {
            change(*task);
        }
        return TaskHistory::Made{};
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
    const std::string name = added->name.valueOr("");
    TaskHistory::of(environment_).record({.tasks = tasks, .withLabels = true}, parent_, [&] {
        for (CDTask* task : found(tasks)) {
            environment_.tasks().addLabel(environment_.context(), *task, name);
        }
        return TaskHistory::Made{};
    });
}

void TaskCommands::duplicate(const Tasks& tasks) const {
    TaskHistory::of(environment_).record({}, parent_, [&] {
        TaskHistory::Made made;
        for (const CDTask* task : found(tasks)) {
            const CDTask& copy = environment_.tasks().duplicate(environment_.context(), *task);
            made.tasks.push_back(*copy.id);
        }
        return made;
    });
}

Uuid TaskCommands::make(const Uuid& taskTemplate) const {
    TaskHistory::Made made;
    TaskHistory::of(environment_).record({}, parent_, [&] {
        const CDTask& task = environment_.taskTemplates().use(
            environment_.context(), taskTemplate, environment_.calendar());
        made.tasks = {*task.id};
        std::ranges::copy(subtasksOf(made.tasks), std::back_inserter(made.tasks));
        return made;
    });
    return made.tasks.front();
}

void TaskCommands::remove(const Tasks& tasks) const {
    const TaskHistory::Affected affected{
        .tasks = tasks, .along = subtasksOf(tasks), .withLabels = true};
    TaskHistory::of(environment_).record(affected, parent_, [&] {
        for (CDTask* task : found(tasks)) {
            // One that went with its parent a moment ago is still found.
            if (!task->isDeleted()) environment_.tasks().remove(environment_.context(), *task);
        }
        return TaskHistory::Made{};
    });
}

void TaskCommands::reorder(const Tasks& inNewOrder) const {
    TaskHistory::of(environment_).record({inNewOrder}, parent_, [&] {
        environment_.tasks().reorder(found(inNewOrder));
        return TaskHistory::Made{};
    });
}

}  // namespace tesserine::app
