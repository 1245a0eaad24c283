#include "app/desktop/TodayWindow.h"

#include "app/commands/Commands.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskActions.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/UndoBar.h"
#include "base/Files.h"

#include <QAction>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr QSize firstSize(360, 460);

}  // namespace

TodayWindow::TodayWindow(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint),
      environment_(environment),
      actions_(new TaskActions(environment, this)),
      tasks_(new TaskListPage(environment, *actions_, this)) {
    setObjectName("todayWindow");
    setWindowTitle(tr("Today"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(tasks_, 1);
    auto* const undo = new UndoBar(this, *this);
    column->addWidget(undo);
    connect(actions_, &TaskActions::completed, undo, &UndoBar::offer);
    connect(actions_, &TaskActions::told, undo, &UndoBar::tell);
    connect(undo, &UndoBar::undone, actions_, &TaskActions::undo);
    tasks_->showPlace({.kind = Place::Kind::today});
    tasks_->quickAdd().keepUnder("tesserine.todaySentence");
    const auto tell = [this](const Uuid& task) {
        emit chosen({.kind = Place::Kind::task, .id = task});
    };
    connect(tasks_, &TaskListPage::opened, this, tell);
    connect(actions_, &TaskActions::opened, this, tell);
    const auto kept = environment_.preferences().string(geometryKey);
    if (!kept || !restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*kept)))) {
        resize(firstSize);
    }
}

TodayWindow::~TodayWindow() { tasks_->quickAdd().keep(); }

/// By actions of its own: those of the table act on what is selected in the large window.
void TodayWindow::takeKeys(const Commands& commands) {
    const auto on = [&](const std::string& id, auto act) {
        auto* const action = new QAction(this);
        const auto takeKeys = [&commands, action, id] { action->setShortcuts(commands.keys(id)); };
        takeKeys();
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(&commands, &Commands::keysChanged, action, takeKeys);
        connect(action, &QAction::triggered, this, [this, act] { act(tasks_->selectedTasks()); });
        tasks_->list().addAction(action);
    };
    on("task.complete", [this](const auto& tasks) { actions_->tick(tasks); });
    on("task.open", [this](const auto& tasks) {
        if (!tasks.empty()) emit chosen({.kind = Place::Kind::task, .id = tasks.front()});
    });
    on("task.due",
       [this](const auto& tasks) { actions_->askDue(tasks, tasks_->placeOfCurrent()); });
    on("task.move", [this](const auto& tasks) { actions_->askProject(tasks); });
    on("task.delete", [this](const auto& tasks) { actions_->askRemove(tasks); });
    for (const int number : {1, 2, 3, 4}) {
        on("task.priority" + std::to_string(number), [this, number](const auto& tasks) {
            actions_->commands().setPriority(tasks, static_cast<TaskPriority>(number));
        });
    }
}

void TodayWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    emit visibilityChanged(true);
}

void TodayWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    try {
        environment_.preferences().set(geometryKey, saveGeometry().toBase64().toStdString());
    } catch (const FileError& error) {
        environment_.log().warning(std::string("today window: ") + error.what());
    }
    emit visibilityChanged(false);
}

}  // namespace tesserine::app
