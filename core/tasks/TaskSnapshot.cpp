#include "core/tasks/TaskSnapshot.h"

#include <algorithm>
#include <tuple>

namespace tesserine {
namespace {

template <class Entity>
std::optional<Uuid> idOf(const Entity* object) {
    return object == nullptr ? std::nullopt : object->id.get();
}

}  // namespace

TaskPriority taskPriority(std::int64_t number) {
    return number >= 1 && number <= 4 ? static_cast<TaskPriority>(number) : TaskPriority::p4;
}

std::string shortLabel(TaskPriority priority) {
    return "P" + std::to_string(static_cast<int>(priority));
}

std::vector<CDTask*> subtasksInOrder(const CDTask& task) {
    if (task.parent != nullptr) return {};
    auto subtasks = task.subtasks.all();
    for (std::size_t i = 0; i < subtasks.size(); ++i) {
        const auto below = subtasks[i]->subtasks.all();
        subtasks.insert(subtasks.end(), below.begin(), below.end());
    }
    std::ranges::stable_sort(subtasks, {}, [](const CDTask* subtask) {
        return std::pair(subtask->sortIndex.valueOr(0), subtask->createdAt.valueOr({}));
    });
    return subtasks;
}

std::vector<std::string> labelNames(const CDTask& task, const text::Collator& collator) {
    std::vector<std::string> names;
    for (const CDTag* label : task.labels.all()) {
        names.push_back(label->name.valueOr(""));
    }
    std::ranges::stable_sort(names, [&](const std::string& a, const std::string& b) {
        return collator.compare(a, b) < 0;
    });
    return names;
}

TaskSnapshot TaskSnapshot::of(const CDTask& task, const text::Collator& collator) {
    TaskSnapshot snapshot{
        .id = task.id.valueOr({}),
        .title = task.title.valueOr(""),
        .details = task.details.valueOr(""),
        .projectID = idOf(task.project.get()),
        .dueDate = task.dueDate,
        .dueHasTime = task.dueHasTime.valueOr(false),
        .reminderAt = task.reminderAt,
        .priority = taskPriority(task.priority.valueOr(4)),
        .recurrenceRule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr("")),
        .labels = labelNames(task, collator),
        .linkedNoteID = idOf(task.linkedNote.get()),
        .createdAt = task.createdAt.valueOr({}),
        .completedAt = task.completedAt,
        .sortIndex = task.sortIndex.valueOr(0),
        .parentID = idOf(task.parent.get())};
    for (const CDTask* subtask : subtasksInOrder(task)) {
        snapshot.subtasks.push_back(of(*subtask, collator));
    }
    return snapshot;
}

}  // namespace tesserine
