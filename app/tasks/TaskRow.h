#pragma once

#include "base/Uuid.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskService.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tesserine::text {
class Collator;
}

namespace tesserine::app {

/// One line of a task list: a task, a subtask below it, or the heading of a group.
struct TaskRow {
    /// The heading; empty for a task.
    QString heading{};
    bool isOverdueGroup = false;

    Uuid id{};
    QString title{};
    std::optional<Instant> dueDate{};
    bool dueHasTime = false;
    TaskPriority priority = TaskPriority::p4;
    QString project{};  ///< empty for the Inbox, and where a list is of one project
    QStringList labels{};
    int subtaskCount = 0;
    int doneSubtaskCount = 0;
    bool isSubtask = false;
    bool isBelowItsDay = false;  ///< a heading above names the day it is due
    bool isCompleted = false;
    bool isExpanded = false;
    bool repeats = false;
    bool hasReminder = false;
    bool hasDetails = false;
    bool hasNote = false;

    bool isTask() const { return heading.isEmpty(); }
    std::optional<TaskDue> due() const {
        return dueDate ? std::optional(TaskDue{.date = *dueDate, .hasTime = dueHasTime})
                       : std::nullopt;
    }
    friend bool operator==(const TaskRow&, const TaskRow&) = default;

    static TaskRow group(const QString& heading, bool isOverdue = false);
    static TaskRow of(const CDTask& task, const text::Collator& collator);
};

/// The title as lists show it.
QString shownTitle(const QString& title);

}  // namespace tesserine::app
