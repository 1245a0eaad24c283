#pragma once

#include "app/state/Place.h"
#include "app/tasks/TaskCommands.h"

#include <QWidget>

#include <optional>

class QLabel;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class EmptyState;
class QuickAddBar;
class TaskListModel;
class TaskListView;
class UndoBar;

/// One view of tasks: its name, the quick-add bar, the list or what teaches how to fill it, and the
/// offer to undo.
class TaskListPage final : public QWidget {
    Q_OBJECT

public:
    explicit TaskListPage(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Shows the tasks of inbox, today, upcoming, allTasks, completed, a project or a label. A
    /// project or label that is gone shows the inbox.
    void showPlace(const Place& place);

    QuickAddBar& quickAdd() const { return *bar_; }
    TaskListView& list() const { return *list_; }
    std::vector<Uuid> selectedTasks() const;

public slots:
    /// Completes the selected tasks when one of them is open, otherwise reopens them.
    void tickSelected();
    void openSelected();
    void askDue();
    void askProject();
    void setPriority(tesserine::TaskPriority priority);
    /// Asks before it deletes.
    void removeSelected();

signals:
    /// The task is to be shown with all it holds; none: nothing or several are selected.
    void chosen(const std::optional<tesserine::Uuid>& task);
    /// The same, and the person wants to go there.
    void opened(const tesserine::Uuid& task);

private:
    void useView(const Place& place);
    void tick(const std::vector<Uuid>& tasks);
    void place(const std::vector<Uuid>& tasks, const std::optional<Uuid>& before);
    void updateState();
    void showMenu(const QPoint& place);
    QPoint placeOfCurrent() const;

    AppEnvironment& environment_;
    TaskCommands commands_;
    TaskListModel* const model_;
    QLabel* const title_;
    QLabel* const count_;
    QuickAddBar* const bar_;
    TaskListView* const list_;
    EmptyState* const empty_;
    QStackedWidget* const stack_;
    UndoBar* const undo_;
    Completion lastCompletion_;
};

}  // namespace tesserine::app
