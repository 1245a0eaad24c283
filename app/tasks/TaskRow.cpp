#include "app/tasks/TaskRow.h"

#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "core/tasks/TaskSnapshot.h"
#include "sync/TaskConflicts.h"

namespace tesserine::app {

TaskRow TaskRow::group(const QString& heading, bool isOverdue) {
    TaskRow row;
    row.heading = heading;
    row.isOverdueGroup = isOverdue;
    return row;
}

TaskRow TaskRow::of(const CDTask& task, const text::Collator& collator) {
    TaskRow row;
    row.id = task.id.valueOr({});
    row.title = QString::fromStdString(task.title.valueOr(""));
    row.dueDate = task.dueDate;
    row.dueHasTime = task.dueHasTime.valueOr(false);
    row.priority = taskPriority(task.priority.valueOr(4));
    const CDProject* project = task.project;
    if (project != nullptr && !project->isInbox.valueOr(false)) {
        row.project = QString::fromStdString(project->name.valueOr(""));
    }
    for (const std::string& label : labelNames(task, collator)) {
        row.labels += QString::fromStdString(label);
    }
    for (const CDTask* subtask : subtasksInOrder(task)) {
        ++row.subtaskCount;
        if (subtask->completedAt) ++row.doneSubtaskCount;
    }
    row.isSubtask = task.parent != nullptr;
    row.isCompleted = task.completedAt.get().has_value();
    row.repeats = !task.recurrenceRule.valueOr("").empty();
    row.hasReminder = task.reminderAt.get().has_value();
    row.hasDetails = !task.details.valueOr("").empty();
    row.hasNote = task.linkedNote != nullptr;
    return row;
}

bool TaskRow::hasPieces() const {
    const bool showsDue = dueDate && (!isBelowItsDay || dueHasTime);
    return showsDue || repeats || hasReminder || hasNote || !project.isEmpty() || !labels.isEmpty();
}

TaskRows::TaskRows(TesserineStore& store, const text::Collator& collator)
    : collator_(collator), context_(store.newBackgroundContext()) {}

TaskRows::~TaskRows() = default;

const TaskRow& TaskRows::of(const Uuid& task) {
    const auto found = kept_.find(task);
    if (found != kept_.end()) return found->second;
    if (kept_.size() >= mostKept) forget();
    const auto* stored = context_->find<CDTask>(task);
    TaskRow row = stored == nullptr ? TaskRow() : TaskRow::of(*stored, collator_);
    row.id = task;
    row.hasConflict = TaskConflicts(*context_).of(task).has_value();
    return kept_.emplace(task, std::move(row)).first->second;
}

void TaskRows::forget() {
    kept_.clear();
    context_->reset();
}

QString shownTitle(const QString& title) {
    const QString line = title.simplified();
    return line.isEmpty() ? QStringLiteral("Untitled task") : line;
}

QString briefTitle(const QString& title) {
    constexpr int longest = 60;
    const QString line = shownTitle(title);
    return line.size() > longest ? line.left(longest) + "…" : line;
}

}  // namespace tesserine::app
