#include "app/tasks/TaskCommands.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskRow.h"
#include "base/Calendar.h"

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

QString Completion::sentence() const {
    if (taskCount_ != 1) return QString("Completed %1 tasks").arg(taskCount_);
    return QString("Completed “%1”")
        .arg(briefTitle(QString::fromStdString(befores_.front().title)));
}

std::vector<CDTask*> TaskCommands::found(const Tasks& tasks) const {
    std::vector<CDTask*> found;
    for (const Uuid& id : tasks) {
        if (auto* const task = environment_.context().find<CDTask>(id)) found.push_back(task);
    }
    return found;
}

Completion TaskCommands::complete(const Tasks& tasks) const {
    Completion completion;
    const auto remember = [&](const CDTask& task) {
        completion.befores_.push_back(
            {*task.id, task.title.valueOr(""), task.dueDate, task.reminderAt, task.completedAt});
    };
    for (CDTask* task : found(tasks)) {
        if (task->completedAt) continue;
        ++completion.taskCount_;
        remember(*task);
        for (const CDTask* subtask : task->subtasks.all()) {
            remember(*subtask);
        }
        const CDTask* copy =
            environment_.tasks().complete(environment_.context(), *task, environment_.calendar());
        if (copy != nullptr) completion.completedCopies_.push_back(*copy->id);
    }
    if (!completion.isEmpty()) environment_.save(parent_);
    return completion;
}

void TaskCommands::undo(const Completion& completion) const {
    for (CDTask* copy : found(completion.completedCopies_)) {
        environment_.tasks().remove(environment_.context(), *copy);
    }
    for (const Completion::Before& before : completion.befores_) {
        auto* const task = environment_.context().find<CDTask>(before.task);
        if (task == nullptr) continue;
        task->dueDate = before.dueDate;
        task->reminderAt = before.reminderAt;
        task->completedAt = before.completedAt;
        if (task->isChanged()) task->updatedAt = environment_.now();
    }
    environment_.save(parent_);
}

void TaskCommands::reopen(const Tasks& tasks) const {
    for (CDTask* task : found(tasks)) {
        environment_.tasks().reopen(*task);
    }
    environment_.save(parent_);
}

void TaskCommands::setDue(const Tasks& tasks, const std::optional<TaskDue>& due) const {
    const Calendar& calendar = environment_.calendar();
    for (CDTask* task : found(tasks)) {
        const bool keepsTime =
            due && !due->hasTime && task->dueDate && task->dueHasTime.valueOr(false);
        const auto kept = keepsTime ? TaskDue{onDay(due->date, *task->dueDate, calendar), true}
                                    : due.value_or(TaskDue{});
        environment_.tasks().setDue(*task, due ? std::optional(kept) : std::nullopt);
    }
    environment_.save(parent_);
}

void TaskCommands::setPriority(const Tasks& tasks, TaskPriority priority) const {
    for (CDTask* task : found(tasks)) {
        environment_.tasks().setPriority(*task, priority);
    }
    environment_.save(parent_);
}

void TaskCommands::move(const Tasks& tasks, const Uuid& project) const {
    auto* const target = environment_.context().find<CDProject>(project);
    if (target == nullptr) return;
    const auto moved = found(tasks);
    const std::set<const CDTask*> chosen(moved.begin(), moved.end());
    for (CDTask* task : moved) {
        // A subtask goes with its task, and leaves it only where it is chosen without it.
        if (chosen.contains(task->parent.get())) continue;
        environment_.tasks().moveToProject(environment_.context(), *task, *target);
    }
    environment_.save(parent_);
}

void TaskCommands::addLabel(const Tasks& tasks, const Uuid& label) const {
    const auto* const added = environment_.context().find<CDTag>(label);
    if (added == nullptr) return;
    for (CDTask* task : found(tasks)) {
        environment_.tasks().addLabel(environment_.context(), *task, added->name.valueOr(""));
    }
    environment_.save(parent_);
}

void TaskCommands::duplicate(const Tasks& tasks) const {
    for (const CDTask* task : found(tasks)) {
        environment_.tasks().duplicate(environment_.context(), *task);
    }
    environment_.save(parent_);
}

void TaskCommands::remove(const Tasks& tasks) const {
    for (CDTask* task : found(tasks)) {
        // One that went with its parent a moment ago is still found.
        if (!task->isDeleted()) environment_.tasks().remove(environment_.context(), *task);
    }
    environment_.save(parent_);
}

void TaskCommands::reorder(const Tasks& inNewOrder) const {
    environment_.tasks().reorder(found(inNewOrder));
    environment_.save(parent_);
}

}  // namespace tesserine::app
