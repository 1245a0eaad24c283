#pragma once

#include "base/Uuid.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskService.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// What completing tasks has changed, so that it can be undone.
class Completion {
public:
    bool isEmpty() const { return befores_.empty(); }
    /// "Completed “Plan”", "Completed 3 tasks".
    QString sentence() const;

private:
    friend class TaskCommands;
    /// A task, or a subtask of one that moved on, as it was.
    struct Before {
        Uuid task;
        std::string title;
        std::optional<Instant> dueDate;
        std::optional<Instant> reminderAt;
        std::optional<Instant> completedAt;
    };
    std::vector<Before> befores_;
    std::vector<Uuid> completedCopies_;
    std::size_t taskCount_ = 0;
};

/// What is done to the tasks that a list or a calendar shows, each in one save. Tasks that are gone
/// are passed over. Belongs to the main thread.
class TaskCommands {
public:
    using Tasks = std::vector<Uuid>;

    /// Failures to save are shown over `parent`.
    TaskCommands(AppEnvironment& environment, QWidget* parent)
        : environment_(environment), parent_(parent) {}

    /// Completes those that are open. Nothing in it when none was.
    Completion complete(const Tasks& tasks) const;
    void undo(const Completion& completion) const;
    void reopen(const Tasks& tasks) const;

    /// Without a time of day the one that a task has stays. None: due no more.
    void setDue(const Tasks& tasks, const std::optional<TaskDue>& due) const;
    void setPriority(const Tasks& tasks, TaskPriority priority) const;
    void move(const Tasks& tasks, const Uuid& project) const;
    void addLabel(const Tasks& tasks, const Uuid& label) const;
    void duplicate(const Tasks& tasks) const;
    void remove(const Tasks& tasks) const;
    /// Gives tasks of one level this order.
    void reorder(const Tasks& inNewOrder) const;

private:
    std::vector<CDTask*> found(const Tasks& tasks) const;

    AppEnvironment& environment_;
    QWidget* parent_;
};

}  // namespace tesserine::app
