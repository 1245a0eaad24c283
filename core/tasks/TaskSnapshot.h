#pragma once

#include "base/Text.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/RecurrenceRule.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// The priority a library's number stands for; `p4` for a number that is none.
TaskPriority taskPriority(std::int64_t number);
/// "P1" to "P4".
std::string shortLabel(TaskPriority priority);

/// A task with its subtasks as plain values, for a user interface.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): the order is that of an export.
struct TaskSnapshot {
    Uuid id{};
    std::string title{};
    std::string details{};
    std::optional<Uuid> projectID{};
    std::optional<Instant> dueDate{};
    bool dueHasTime = false;
    std::optional<Instant> reminderAt{};
    TaskPriority priority = TaskPriority::p4;
    std::optional<RecurrenceRule> recurrenceRule{};
    std::vector<std::string> labels{};  ///< names as a reader expects them sorted
    std::optional<Uuid> linkedNoteID{};
    Instant createdAt{};
    std::optional<Instant> completedAt{};
    std::int64_t sortIndex = 0;
    std::optional<Uuid> parentID{};  ///< of a subtask
    std::vector<TaskSnapshot> subtasks{};

    /// The task as its context shows it now.
    static TaskSnapshot of(const CDTask& task, const text::Collator& collator);
};

/// The subtasks in manual order, completed ones included. What two devices have put below a subtask
/// stands among them; a subtask has none.
std::vector<CDTask*> subtasksInOrder(const CDTask& task);
/// The names of the task's labels as a reader expects them sorted.
std::vector<std::string> labelNames(const CDTask& task, const text::Collator& collator);

}  // namespace tesserine
