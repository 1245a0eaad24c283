#include "app/tasks/TasksPage.h"

#include "app/commands/Commands.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/CalendarGrid.h"
#include "app/tasks/CalendarPage.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/RemindersPage.h"
#include "app/tasks/TaskActions.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskHistory.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TemplateManager.h"
#include "app/tasks/UndoBar.h"

#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int leastDetailWidth = 300;
constexpr int leastListWidth = 320;
constexpr int usualDetailWidth = 380;
constexpr int usualListWidth = 560;

}  // namespace

TasksPage::TasksPage(AppEnvironment& environment, Commands& commands, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      actions_(new TaskActions(environment, this)),
      splitter_(new QSplitter(this)),
      stack_(new QStackedWidget(this)),
      list_(new TaskListPage(environment, *actions_, this)),
      calendar_(new CalendarPage(environment, *actions_, this)),
      reminders_(new RemindersPage(environment, this)),
      templates_(new TemplateManager(environment, this)),
      undo_(new UndoBar(this, *this)),
      detail_(new TaskDetail(environment, this)) {
    setObjectName("tasksPage");
    for (QWidget* const page :
         {static_cast<QWidget*>(list_),
          static_cast<QWidget*>(calendar_),
          static_cast<QWidget*>(reminders_),
          static_cast<QWidget*>(templates_)}) {
        page->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
        stack_->addWidget(page);
    }
    auto* const left = new QWidget(this);
    left->setAutoFillBackground(true);
    left->setBackgroundRole(QPalette::Base);
    auto* const column = new QVBoxLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(stack_, 1);
    auto* const foot = new QVBoxLayout;
    foot->setContentsMargins(space::large, 0, space::large, space::small);
    foot->addWidget(undo_);
    column->addLayout(foot);

    column->addStrut(leastListWidth);  // the page that is shown may ask for more
    detail_->setMinimumWidth(leastDetailWidth);
    detail_->hide();
    splitter_->addWidget(left);
    splitter_->addWidget(detail_);
    splitter_->setChildrenCollapsible(false);
    splitter_->setHandleWidth(1);
    splitter_->setStretchFactor(0, 1);
    splitter_->setSizes({usualListWidth, usualDetailWidth});
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter_);

    followPages();
    handleCommands(commands);
    list_->quickAdd().keepUnder("tesserine.quickAddSentence");
    calendar_->quickAdd().keepUnder("tesserine.calendarSentence");
}

void TasksPage::followPages() {
    // Behind another page the list goes on to its next task unseen.
    connect(list_, &TaskListPage::chosen, this, [this](const std::optional<Uuid>& task) {
        if (stack_->currentWidget() == list_) followChoice(task);
    });
    connect(list_, &TaskListPage::opened, this, &TasksPage::openDetail);
    connect(calendar_, &CalendarPage::chosen, this, &TasksPage::followChoice);
    connect(calendar_, &CalendarPage::opened, this, &TasksPage::openDetail);
    connect(actions_, &TaskActions::opened, this, &TasksPage::openDetail);
    connect(actions_, &TaskActions::completed, undo_, &UndoBar::offer);
    connect(actions_, &TaskActions::told, undo_, &UndoBar::tell);
    connect(undo_, &UndoBar::undone, this, [this] {
        if (detail_->flush()) actions_->undo();
    });
    using Seen = TaskHistory::Seen;
    const auto tellUnseen = [this](const QString& sentence, const auto& tasks, Seen seen) {
        const auto isSeen = [this, seen](const Uuid& task) {
            if (seen == Seen::inPanel) return detail_->isVisible() && detail_->task() == task;
            const bool isList = stack_->currentWidget() == list_;
            return isCalendar() || (isList && list_->list().lists(task));
        };
        if (std::ranges::none_of(tasks, isSeen)) undo_->tell(sentence);
    };
    connect(&TaskHistory::of(environment_), &TaskHistory::takenBack, this, tellUnseen);
    connect(
        detail_, &TaskDetail::ticked, this, [this](const Uuid& task) { actions_->tick({task}); });
    connect(detail_, &TaskDetail::noteChosen, this, &TasksPage::noteChosen);
    connect(detail_, &TaskDetail::closed, this, &TasksPage::closeDetail);
    connect(detail_, &TaskDetail::left, this, &TasksPage::focusPage);
    connect(list_, &TaskListPage::templatesAsked, this, &TasksPage::showTemplates);
    connect(reminders_, &RemindersPage::taskChosen, this, &TasksPage::openDetail);
    connect(reminders_, &RemindersPage::chosen, this, [this](const auto& task) {
        if (detail_->isVisible()) showDetail(task);
    });
    connect(reminders_, &RemindersPage::noteChosen, this, &TasksPage::noteChosen);
    connect(actions_, &TaskActions::templateMade, this, [this](const Uuid& made) {
        showTemplates();
        templates_->showTemplate(made);
    });
    connect(templates_, &TemplateManager::used, this, &TasksPage::openDetail);
}

void TasksPage::handleCommands(Commands& commands) {
    for (const QKeySequence& keys : Commands::usualKeys("edit.redo")) {
        auto* const redo = new QShortcut(keys, this);
        redo->setContext(Qt::WidgetWithChildrenShortcut);
        connect(redo, &QShortcut::activated, this, [this] {
            if (detail_->flush()) actions_->redo();
        });
    }
    commands.attach(CommandContext::tasks, list_->list());
    commands.attach(CommandContext::tasks, calendar_->grid());
    const auto onSelected = [&](std::string_view id, auto act) {
        commands.on(id, this, [this, act] { act(selectedTasks()); });
    };
    onSelected("task.complete", [this](const auto& tasks) { actions_->tick(tasks); });
    onSelected("task.move", [this](const auto& tasks) { actions_->askProject(tasks); });
    onSelected("task.delete", [this](const auto& tasks) { actions_->askRemove(tasks); });
    onSelected("task.due", [this](const auto& tasks) {
        actions_->askDue(
            tasks, isCalendar() ? calendar_->placeOfCurrent() : list_->placeOfCurrent());
    });
    onSelected("task.open", [this](const auto& tasks) {
        if (!tasks.empty()) {
            openDetail(tasks.front());
        } else if (isCalendar()) {
            quickAdd().setFocus();
        }
    });
    for (const int number : {1, 2, 3, 4}) {
        const std::string id = "task.priority" + std::to_string(number);
        onSelected(id, [this, number](const auto& tasks) {
            actions_->commands().setPriority(tasks, static_cast<TaskPriority>(number));
        });
    }
}

bool TasksPage::shows(Place::Kind kind) {
    switch (kind) {
    case Place::Kind::inbox:
    case Place::Kind::today:
    case Place::Kind::upcoming:
    case Place::Kind::allTasks:
    case Place::Kind::completed:
    case Place::Kind::calendar:
    case Place::Kind::reminders:
    case Place::Kind::project:
    case Place::Kind::label:
    case Place::Kind::task: return true;
    default: return false;
    }
}

void TasksPage::showPage(QWidget* page) {
    undo_->hide();
    templates_->flush();
    // What is not shown asks for no room.
    stack_->currentWidget()->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    page->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    stack_->setCurrentWidget(page);
}

void TasksPage::showTemplates() {
    if (detail_->flush()) detail_->hide();
    showPage(templates_);
    templates_->open();
}

void TasksPage::showPlace(const Place& place) {
    if (place.kind == Place::Kind::calendar) {
        showPage(calendar_);
        calendar_->open();
        return showChosen();
    }
    if (place.kind == Place::Kind::reminders) {
        showPage(reminders_);
        reminders_->open();
        return showChosen();
    }
    showPage(list_);
    if (place.kind != Place::Kind::task) {
        list_->showPlace(place);
        return showChosen();
    }
    const auto* const task = environment_.context().find<CDTask>(place.id);
    const CDProject* const project = task == nullptr ? nullptr : task->project.get();
    const Uuid home = project == nullptr ? Uuid{} : project->id.valueOr({});
    list_->showPlace({.kind = Place::Kind::project, .id = home});
    list_->list().selectTask(place.id);
    if (task != nullptr && editedTask() != place.id) openDetail(place.id);
}

std::optional<Uuid> TasksPage::editedTask() const {
    return detail_->isAncestorOf(window()->focusWidget()) ? detail_->task() : std::nullopt;
}

void TasksPage::focusPage() {
    QWidget& content = *stack_->currentWidget()->focusProxy();
    if (content.isVisibleTo(this)) content.setFocus();  // also before the window is shown
}

bool TasksPage::isCalendar() const { return stack_->currentWidget() == calendar_; }

std::vector<Uuid> TasksPage::selectedTasks() const {
    if (isCalendar()) return calendar_->selectedTasks();
    return stack_->currentWidget() == list_ ? list_->selectedTasks() : std::vector<Uuid>{};
}

QuickAddBar& TasksPage::quickAdd() const {
    return isCalendar() ? calendar_->quickAdd() : list_->quickAdd();
}

void TasksPage::beginTask(const QString& sentence) {
    if (!isCalendar()) showPage(list_);
    quickAdd().begin(sentence);
}

bool TasksPage::flush() {
    list_->quickAdd().keep();
    calendar_->quickAdd().keep();
    return detail_->flush() && templates_->flush();
}

/// A task whose fields have the keys stays beside the list when it gets another day, project or
/// end, there or from another program; no other one is chosen then, so that no key is meant for it.
void TasksPage::followChoice(const std::optional<Uuid>& task) {
    const auto edited = editedTask();
    const bool isThere = edited && environment_.context().find<CDTask>(*edited) != nullptr;
    const bool isListed = !isCalendar() && edited && list_->list().lists(*edited);
    if (!isThere || isListed || edited == task) return showDetail(task);
    list_->list().clearSelection();
}

/// The list goes on to the next task when another program takes one away. What is being typed was
/// not meant for that, nor for the list, where letters are commands.
void TasksPage::showDetail(const std::optional<Uuid>& task) {
    const bool isTypedInto =
        detail_->isAncestorOf(window()->focusWidget()) && detail_->task() != task;
    const std::size_t count = task ? 1 : selectedTasks().size();
    if (count > 1) {
        detail_->showSeveral(count);
    } else {
        detail_->showTask(task);
    }
    if (task && isDetailWanted_) detail_->show();
    if (isTypedInto) detail_->setFocus();
}

/// Not what was chosen at the place before.
void TasksPage::showChosen() {
    const auto tasks = selectedTasks();
    showDetail(tasks.size() == 1 ? std::optional(tasks.front()) : std::nullopt);
    if (tasks.empty()) detail_->hide();  // until one is chosen
}

void TasksPage::openDetail(const Uuid& task) {
    isDetailWanted_ = true;
    showDetail(task);
    detail_->editTitle();
}

void TasksPage::closeDetail() {
    detail_->flush();
    detail_->hide();
    isDetailWanted_ = false;
    focusPage();
}

}  // namespace tesserine::app
