#pragma once

#include "app/state/Place.h"
#include "base/Uuid.h"

#include <QWidget>

#include <optional>
#include <vector>

class QSplitter;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class CalendarPage;
class Commands;
class QuickAddBar;
class RemindersPage;
class TaskActions;
class TaskDetail;
class TaskListPage;
class TemplateManager;
class UndoBar;

/// Everything about tasks in the window: lists and calendar, with the chosen task beside them.
///
/// Handles the commands "task.…" for whichever of them is shown.
class TasksPage final : public QWidget {
    Q_OBJECT

public:
    TasksPage(AppEnvironment& environment, Commands& commands, QWidget* parent = nullptr);

    /// Whether the place is one of those shown here.
    static bool shows(Place::Kind kind);
    /// Inbox, today, upcoming, all tasks, completed, calendar, reminders, a project, a label, or a
    /// task, which is shown in its project.
    void showPlace(const Place& place);
    /// The task templates.
    void showTemplates();
    /// Goes to the quick-add bar, with this sentence in it when there is one.
    void beginTask(const QString& sentence = {});
    /// The task beside the list or calendar while something there has the keys.
    std::optional<Uuid> editedTask() const;
    /// Saves what is being typed; false when it could not be saved. A sentence in the quick-add bar
    /// of the lists is kept for the next start.
    bool flush();

    TaskListPage& listPage() const { return *list_; }
    /// Gives the keys to what the page lists.
    void focusPage();
    CalendarPage& calendarPage() const { return *calendar_; }
    TaskDetail& detail() const { return *detail_; }

signals:
    /// The note that a task is linked to was asked for.
    void noteChosen(const tesserine::Uuid& note);

private:
    void handleCommands(Commands& commands);
    void followPages();
    void showPage(QWidget* page);
    void showChosen();
    void followChoice(const std::optional<Uuid>& task);
    void showDetail(const std::optional<Uuid>& task);
    void openDetail(const Uuid& task);
    void closeDetail();
    bool isCalendar() const;
    std::vector<Uuid> selectedTasks() const;
    QuickAddBar& quickAdd() const;

    AppEnvironment& environment_;
    TaskActions* const actions_;
    QSplitter* const splitter_;
    QStackedWidget* const stack_;
    TaskListPage* const list_;
    CalendarPage* const calendar_;
    RemindersPage* const reminders_;
    TemplateManager* const templates_;
    UndoBar* const undo_;
    TaskDetail* const detail_;
    bool isDetailWanted_ = true;  // until it is closed; opening a task brings it back
};

}  // namespace tesserine::app
