#pragma once

#include "core/model/TaskEntities.h"
#include "core/tasks/QuickAddParser.h"
#include "core/tasks/RecurrenceRule.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// The titles of the subtasks that a template makes, in their order.
using TaskTemplateSubtasks = std::vector<std::string>;

/// What a task template holds.
struct TaskTemplateContent {
    std::string name{};   ///< of the template itself
    std::string title{};  ///< of the task it makes
    std::string notes{};  ///< the task's details
    TaskPriority priority = TaskPriority::p4;
    std::vector<std::string> labels{};  ///< names
    /// Counted from the day the task is created; none: the task is not due.
    std::optional<std::int64_t> dueOffsetDays{};
    std::optional<TimeOfDay> dueTime{};
    std::optional<RecurrenceRule> recurrence{};
    std::optional<Uuid> projectID{};
    TaskTemplateSubtasks subtasks{};

    /// As the library keeps it. What cannot be read counts as absent.
    static TaskTemplateContent of(const CDTaskTemplate& stored);
    /// Puts everything into `stored`, offsets below zero as zero.
    void store(CDTaskTemplate& stored) const;

    /// One line for lists, such as "P1 · Due the day after it is created at 09:05 · 2 subtasks".
    std::string summary() const;
};

/// A task template as plain values, for a user interface.
struct TaskTemplateSnapshot {
    Uuid id{};
    TaskTemplateContent content{};
    Instant createdAt{};

    static TaskTemplateSnapshot of(const CDTaskTemplate& stored);
};

/// "09:05"
std::string timeText(TimeOfDay time);
/// Reads that form, also with one digit for the hour; none for a time that is none.
std::optional<TimeOfDay> timeOfDay(std::string_view text);

}  // namespace tesserine
