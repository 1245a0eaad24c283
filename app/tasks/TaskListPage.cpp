#include "app/tasks/TaskListPage.h"

#include "app/look/EmptyState.h"
#include "app/look/IconButton.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskActions.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>

namespace tesserine::app {
namespace {

EmptyState::Content emptyContent(const TaskView& view) {
    switch (view.kind()) {
    case TaskView::Kind::today:
        return {
            "today",
            "Nothing due today",
            "Enjoy the day. What has to happen today stands here, and what is overdue above it. Try "
            "“Call Anna 3pm”."};
    case TaskView::Kind::upcoming:
        return {
            "upcoming",
            "Nothing ahead",
            "Tasks with a date after today stand here, day by day. Try “Dentist friday 10am”."};
    case TaskView::Kind::inbox:
        return {
            "inbox",
            "The Inbox is empty",
            "What you add without naming a project waits here until you find its place. A # names "
            "a project: “Paint the fence #Garden”."};
    case TaskView::Kind::completed:
        return {
            "task-done",
            "Nothing completed yet",
            "Tick the circle of a task, or press Space, and it moves here, the newest first."};
    case TaskView::Kind::project:
        return {
            "project",
            "No tasks in this project",
            "Add the first one above, or drag tasks onto the project in the sidebar."};
    case TaskView::Kind::label:
        return {
            "label",
            "No tasks with this label",
            "An @ in the sentence gives a task a label: “Buy nails @errands”."};
    case TaskView::Kind::all: break;
    }
    return {
        "all-tasks",
        "No tasks yet",
        "Write down what is on your mind, one sentence a task. Dates, #projects, @labels and p1 to "
        "p4 are understood."};
}

std::string nameOf(const std::optional<std::string>& name) { return name.value_or(""); }

}  // namespace

TaskListPage::TaskListPage(AppEnvironment& environment, TaskActions& actions, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      actions_(actions),
      model_(new TaskListModel(environment, this)),
      title_(new QLabel(this)),
      count_(new QLabel(this)),
      bar_(new QuickAddBar(environment, this)),
      list_(new TaskListView(environment, *model_, this)),
      empty_(new EmptyState({"today", {}, {}}, this)),
      stack_(new QStackedWidget(this)) {
    setObjectName("taskListPage");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    title_->setObjectName("taskListTitle");
    title_->setFont(Theme::font(TextRole::title));
    title_->setTextFormat(Qt::PlainText);
    title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    count_->setObjectName("taskCount");
    count_->setFont(Theme::font(TextRole::caption));
    count_->setForegroundRole(QPalette::PlaceholderText);

    auto* const head = new QHBoxLayout;
    head->addWidget(title_, 1);
    head->addWidget(count_);
    auto* const templates = new IconButton("template", "New task from a template", this);
    head->addWidget(templates);
    connect(templates, &IconButton::clicked, this, [this, templates] {
        showTemplateMenu(templates->mapToGlobal(QPoint(0, templates->height())));
    });
    setFocusProxy(list_);
    stack_->addWidget(list_);
    stack_->addWidget(empty_);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::large, space::large, space::large, space::medium);
    layout->setSpacing(space::medium);
    layout->addLayout(head);
    layout->addWidget(bar_);
    layout->addWidget(stack_, 1);

    connect(model_, &TaskListModel::settled, this, &TaskListPage::updateState);
    connect(model_, &TaskListModel::settled, this, &TaskListPage::updateCount);
    connect(
        list_, &TaskListView::ticked, this, [this](const Uuid& task) { actions_.tick({task}); });
    connect(&actions_, &TaskActions::completing, list_, &TaskListView::drawTicks);
    connect(list_, &TaskListView::opened, this, &TaskListPage::opened);
    connect(list_, &TaskListView::chosen, this, &TaskListPage::chosen);
    connect(list_, &TaskListView::placed, this, &TaskListPage::place);
    connect(list_, &TaskListView::movedToDay, this, [this](const auto& tasks, Instant day) {
        actions_.commands().setDue(tasks, TaskDue{.date = day});
    });
    connect(&environment, &AppEnvironment::libraryChanged, this, &TaskListPage::followNames);
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] {
        bar_->setDefaults(contentOf(place_).defaults);
    });
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(list_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        actions_.showMenu(selectedTasks(), list_->viewport()->mapToGlobal(at));
    });
    connect(bar_, &QuickAddBar::created, this, [this](const Uuid& task) {
        if (!model_->belongs(task)) return actions_.tellWhereAdded(task);
        list_->selectTask(task);
    });
    connect(bar_, &QuickAddBar::left, list_, [this] { list_->setFocus(); });
}

void TaskListPage::showPlace(const Place& place) {
    place_ = place;
    Content content = contentOf(place);
    title_->setText(content.title);
    count_->clear();
    model_->setView(content.view);
    list_->scrollToTop();
    bar_->setDefaults(std::move(content.defaults));
    empty_->setContent(emptyContent(content.view));
    updateState();
}

TaskListPage::Content TaskListPage::contentOf(const Place& place) const {
    StoreContext& context = environment_.context();
    switch (place.kind) {
    case Place::Kind::today: {
        const Instant today = environment_.calendar().startOfDay(environment_.now());
        return {"Today", TaskView::today(), {.dueDay = today}};
    }
    case Place::Kind::upcoming: return {"Upcoming", TaskView::upcoming()};
    case Place::Kind::allTasks: return {"All Tasks", TaskView::all()};
    case Place::Kind::completed: return {"Completed", TaskView::completed()};
    case Place::Kind::project:
        if (const auto* project = context.find<CDProject>(place.id)) {
            const auto name = QString::fromStdString(nameOf(project->name));
            return {name, TaskView::project(place.id), {.projectName = name}};
        }
        break;
    case Place::Kind::label:
        if (const auto* label = context.find<CDTag>(place.id)) {
            const auto name = QString::fromStdString(nameOf(label->name));
            return {name, TaskView::label(nameOf(label->name)), {.label = name}};
        }
        break;
    default: break;
    }
    return {"Inbox", TaskView::inbox()};
}

/// A project or label that is shown gets another name in the sidebar, or from another program.
void TaskListPage::followNames() {
    const bool hasName = place_.kind == Place::Kind::project || place_.kind == Place::Kind::label;
    if (!hasName || contentOf(place_).title == title_->text()) return;
    const auto chosen = selectedTasks();
    showPlace(place_);
    if (chosen.size() == 1) list_->selectTask(chosen.front());
}

void TaskListPage::updateState() {
    const bool isEmpty = model_->rowCount() == 0;
    stack_->setCurrentWidget(isEmpty ? static_cast<QWidget*>(empty_) : list_);
}

void TaskListPage::updateCount() {
    const auto count = model_->taskCount();
    if (!count) return;  // it is being counted
    count_->setText(
        *count == 0   ? QString()
        : *count == 1 ? QString("1 task")
                      : QString("%L1 tasks").arg(*count));
}

void TaskListPage::showTemplateMenu(const QPoint& globalPlace) {
    auto* const menu = new QMenu(this);
    menu->setObjectName("templateMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const CDTaskTemplate* stored :
         environment_.taskTemplates().all(environment_.context(), environment_.collator())) {
        const QString name = QString::fromStdString(nameOf(stored->name)).replace('&', "&&");
        menu->addAction(name, this, [this, id = *stored->id] { use(id); });
    }
    if (!menu->isEmpty()) menu->addSeparator();
    menu->addAction("Task Templates…", this, &TaskListPage::templatesAsked);
    menu->popup(globalPlace);
}

void TaskListPage::use(const Uuid& taskTemplate) {
    try {
        const Uuid id = actions_.commands().make(taskTemplate);
        list_->selectTask(id);
        emit opened(id);
    } catch (const TaskTemplateError& error) {
        showNotice(this, error.what());
    }
}

std::vector<Uuid> TaskListPage::selectedTasks() const { return list_->selectedTasks(); }

QPoint TaskListPage::placeOfCurrent() const {
    const QRect line = list_->visualRect(list_->currentIndex());
    return list_->viewport()->mapToGlobal(line.bottomLeft() + QPoint(space::vast, 0));
}

void TaskListPage::place(const std::vector<Uuid>& tasks, const std::optional<Uuid>& before) {
    const auto order = model_->orderWith(tasks, before);
    if (!order.empty()) actions_.commands().reorder(order);
}

}  // namespace tesserine::app
