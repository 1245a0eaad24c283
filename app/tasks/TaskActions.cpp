#include "app/tasks/TaskActions.h"

#include "app/look/Icon.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/ProjectPicker.h"
#include "app/tasks/TaskHistory.h"
#include "app/tasks/TaskRow.h"
#include "app/tasks/TaskWords.h"
#include "app/tasks/WhenPopup.h"

#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace tesserine::app {

TaskActions::TaskActions(AppEnvironment& environment, QWidget* host)
    : QObject(host), environment_(environment), host_(host), commands_(environment, host) {
    connect(
        &TaskHistory::of(environment), &TaskHistory::lastChanged, this, &TaskActions::completed);
}

void TaskActions::tick(const Tasks& tasks) {
    Tasks open;
    for (const Uuid& id : tasks) {
        const auto* const task = environment_.context().find<CDTask>(id);
        if (task != nullptr && !task->completedAt) open.push_back(id);
    }
    if (open.empty()) {
        commands_.reopen(tasks);
        return;
    }
    emit completing(open);
    commands_.complete(open);
}

void TaskActions::undo() { TaskHistory::of(environment_).undo(host_); }

void TaskActions::redo() { TaskHistory::of(environment_).redo(host_); }

void TaskActions::askDue(const Tasks& tasks, const QPoint& globalPlace) {
    if (tasks.empty()) return;
    const auto* const first = environment_.context().find<CDTask>(tasks.front());
    auto* const popup = WhenPopup::forDue(environment_, host_);
    connect(popup, &WhenPopup::picked, this, [this, tasks](const std::optional<TaskDue>& due) {
        commands_.setDue(tasks, due);
    });
    popup->open(globalPlace, first == nullptr ? std::nullopt : first->dueDate.get());
}

void TaskActions::askProject(const Tasks& tasks) {
    if (tasks.empty()) return;
    auto* const picker = new ProjectPicker(environment_, host_->window());
    connect(picker, &ProjectPicker::projectChosen, this, [this, tasks](const Uuid& project) {
        commands_.move(tasks, project);
    });
    picker->open();
}

void TaskActions::askRemove(const Tasks& tasks) {
    if (tasks.empty()) return;
    const auto* const first = environment_.context().find<CDTask>(tasks.front());
    if (first == nullptr) return;
    const bool haveSubtasks = std::ranges::any_of(tasks, [&](const Uuid& id) {
        const auto* const task = environment_.context().find<CDTask>(id);
        return task != nullptr && !task->subtasks.all().empty();
    });
    const QString title = briefTitle(QString::fromStdString(first->title.valueOr("")));
    const QString what =
        tasks.size() == 1 ? QString("“%1”").arg(title) : QString("%1 tasks").arg(tasks.size());
    auto* const question = new QMessageBox(
        QMessageBox::NoIcon,
        "Delete Tasks",
        QString(haveSubtasks ? "Delete %1, with the subtasks below?" : "Delete %1?").arg(what),
        QMessageBox::Cancel,
        host_);
    question->setObjectName("deleteTasks");
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setDefaultButton(QMessageBox::Cancel);
    question->setInformativeText(
        "Tasks do not go to the trash. Undo brings them back until Tesserine is closed.");
    auto* const button = question->addButton("Delete", QMessageBox::DestructiveRole);
    connect(button, &QPushButton::clicked, this, [this, tasks] { commands_.remove(tasks); });
    question->open();
}

void TaskActions::tellWhereAdded(const Uuid& id) {
    const auto* const task = environment_.context().find<CDTask>(id);
    if (task == nullptr) return;
    const TaskRow row = TaskRow::of(*task, environment_.collator());
    const QString project = row.project.isEmpty() ? QString("the Inbox") : row.project;
    const TaskWords words(environment_.now(), environment_.calendar());
    const QString due = row.due() ? " · " + words.due(*row.due()) : QString();
    emit told(QString("Added “%1” to %2").arg(briefTitle(row.title), project) + due);
}

void TaskActions::saveAsTemplate(const Uuid& task) {
    const auto* const source = environment_.context().find<CDTask>(task);
    if (source == nullptr) return;
    const TaskTemplateService& templates = environment_.taskTemplates();
    TaskTemplateContent content = templates.contentOf(*source, environment_.collator());
    if (!content.title.empty()) content.name = content.title;
    const CDTaskTemplate& made = templates.create(environment_.context(), std::move(content));
    const Uuid id = *made.id;
    if (environment_.save(host_)) emit templateMade(id);
}

void TaskActions::showMenu(const Tasks& tasks, const QPoint& globalPlace) {
    if (tasks.empty()) return;
    auto* const menu = new QMenu(host_);
    menu->setObjectName("taskMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon("task-done"), "Complete or Reopen", this, [this, tasks] { tick(tasks); });
    menu->addAction(icon("open"), "Open", this, [this, tasks] { emit opened(tasks.front()); });
    menu->addAction(icon("calendar"), "Due Date…", this, [this, tasks, globalPlace] {
        askDue(tasks, globalPlace);
    });
    menu->addAction(
        icon("project"), "Move to Project…", this, [this, tasks] { askProject(tasks); });
    QMenu* const priorities = menu->addMenu(icon("flag"), "Priority");
    for (const int number : {1, 2, 3, 4}) {
        const auto priority = static_cast<TaskPriority>(number);
        const QString title = number == 4 ? QString("None") : QString("Priority %1").arg(number);
        const QString picture = number == 4 ? "flag" : "flag-full";
        const QColor& color = Theme::colors().priority[number - 1];
        priorities->addAction(icon(picture, color), title, this, [this, tasks, priority] {
            commands_.setPriority(tasks, priority);
        });
    }
    menu->addAction(
        icon("duplicate"), "Duplicate", this, [this, tasks] { commands_.duplicate(tasks); });
    menu->addSeparator();
    menu->addAction(
        icon("trash", Ink::danger), "Delete…", this, [this, tasks] { askRemove(tasks); });
    menu->popup(globalPlace);
}

}  // namespace tesserine::app
