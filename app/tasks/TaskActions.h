#pragma once

#include "app/tasks/TaskCommands.h"

#include <QObject>
#include <QPoint>

namespace tesserine::app {

/// What a person does to tasks wherever they are shown: with the questions it asks, and the offer
/// to undo what was done last.
class TaskActions final : public QObject {
    Q_OBJECT

public:
    using Tasks = std::vector<Uuid>;

    /// Questions are asked over `host`.
    TaskActions(AppEnvironment& environment, QWidget* host);

    const TaskCommands& commands() const { return commands_; }

    /// Completes those that are open; when none is, reopens them.
    void tick(const Tasks& tasks);
    /// Takes back what was done last to tasks.
    void undo();
    /// Does again what was taken back last.
    void redo();
    void askDue(const Tasks& tasks, const QPoint& globalPlace);
    void askProject(const Tasks& tasks);
    void askRemove(const Tasks& tasks);
    void saveAsTemplate(const Uuid& task);
    /// Says where a task went that was added and is not seen.
    void tellWhereAdded(const Uuid& task);
    /// All of it as a menu.
    void showMenu(const Tasks& tasks, const QPoint& globalPlace);

signals:
    /// The tasks are completed at once, so that lists may draw their ticks.
    void completing(const std::vector<tesserine::Uuid>& tasks);
    /// What was done last, as a sentence, and can be undone; see `TaskHistory::lastChanged`.
    void completed(const QString& sentence);
    /// What may not be seen: “Added “Call Ana” to Work · Tomorrow 09:00”
    void told(const QString& sentence);
    void templateMade(const tesserine::Uuid& made);
    /// The menu was asked to open a task.
    void opened(const tesserine::Uuid& task);

private:
    AppEnvironment& environment_;
    QWidget* host_;
    TaskCommands commands_;
};

}  // namespace tesserine::app
