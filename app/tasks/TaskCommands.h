#pragma once

#include "base/Uuid.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskService.h"

#include <functional>
#include <optional>
#include <vector>

class QWidget;

namespace tesserine::app {

class AppEnvironment;

/// What is done to the tasks that a list or a calendar shows, each in one save. Tasks that are gone
/// are passed over. The environment's `TaskHistory` can take back what it covers. Belongs to the
/// main thread.
class TaskCommands {
public:
    using Tasks = std::vector<Uuid>;

    /// Failures to save are shown over `parent`.
    TaskCommands(AppEnvironment& environment, QWidget* parent)
        : environment_(environment), parent_(parent) {}

    /// Completes those that are open.
    void complete(const Tasks& tasks) const;
    void reopen(const Tasks& tasks) const;

    /// Without a time of day the one that a task has stays. None: due no more.
    void setDue(const Tasks& tasks, const std::optional<TaskDue>& due) const;
    void setPriority(const Tasks& tasks, TaskPriority priority) const;
    void move(const Tasks& tasks, const Uuid& project) const;
    void addLabel(const Tasks& tasks, const Uuid& label) const;
    void duplicate(const Tasks& tasks) const;
    /// A task with its subtasks, of a template. Throws `TaskTemplateError`.
    Uuid make(const Uuid& taskTemplate) const;
    void remove(const Tasks& tasks) const;
    /// Gives tasks of one level this order.
    void reorder(const Tasks& inNewOrder) const;

private:
    std::vector<CDTask*> found(const Tasks& tasks) const;
    Tasks subtasksOf(const Tasks& tasks) const;
    void changeEach(const Tasks& tasks, const std::function<void(CDTask&)>& change) const;

    AppEnvironment& environment_;
    QWidget* parent_;
};

}  // namespace tesserine::app
