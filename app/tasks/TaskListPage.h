#pragma once

#include "app/state/Place.h"
#include "app/tasks/QuickAddModel.h"
#include "base/Uuid.h"
#include "core/tasks/TaskView.h"

#include <QWidget>

#include <cstddef>
#include <optional>
#include <vector>

class QLabel;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class EmptyState;
class QuickAddBar;
class TaskActions;
class TaskListModel;
class TaskListView;

/// One view of tasks: its name, the quick-add bar, the list or what teaches how to fill it.
class TaskListPage final : public QWidget {
    Q_OBJECT

public:
    TaskListPage(AppEnvironment& environment, TaskActions& actions, QWidget* parent = nullptr);

    /// Shows the tasks of inbox, today, upcoming, allTasks, completed, a project or a label. A
    /// project or label that is gone shows the inbox.
    void showPlace(const Place& place);

    QuickAddBar& quickAdd() const { return *bar_; }
    TaskListView& list() const { return *list_; }
    std::vector<Uuid> selectedTasks() const;
    /// Below the current line, for a pop-up about it.
    QPoint placeOfCurrent() const;

signals:
    /// The person wants to see the task templates.
    void templatesAsked();
    /// The task is to be shown with all it holds; none: nothing or several are selected.
    void chosen(const std::optional<tesserine::Uuid>& task);
    /// The same, and the person wants to go there.
    void opened(const tesserine::Uuid& task);

private:
    struct Content {
        QString title;
        TaskView view;
        QuickAddDefaults defaults{};  ///< of what is added there
    };
    Content contentOf(const Place& place) const;
    void followNames();
    void place(const std::vector<Uuid>& tasks, const std::optional<Uuid>& before);
    void updateState();
    void updateCount();
    void showTemplateMenu(const QPoint& globalPlace);
    void use(const Uuid& taskTemplate);

    AppEnvironment& environment_;
    TaskActions& actions_;
    Place place_{};
    TaskListModel* const model_;
    QLabel* const title_;
    QLabel* const count_;
    QuickAddBar* const bar_;
    TaskListView* const list_;
    EmptyState* const empty_;
    QStackedWidget* const stack_;
};

}  // namespace tesserine::app
