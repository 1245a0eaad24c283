#include "app/tasks/TaskListPage.h"

#include "app/look/EmptyState.h"
#include "app/look/Icon.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/ProjectPicker.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TaskWords.h"
#include "app/tasks/UndoBar.h"
#include "app/tasks/WhenPopup.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

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

TaskListPage::TaskListPage(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      commands_(environment, this),
      model_(new TaskListModel(environment, this)),
      title_(new QLabel(this)),
      count_(new QLabel(this)),
      bar_(new QuickAddBar(environment, this)),
      list_(new TaskListView(environment, *model_, this)),
      empty_(new EmptyState({"today", {}, {}}, this)),
      stack_(new QStackedWidget(this)),
      undo_(new UndoBar(this)) {
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
    head->addWidget(count_, 0, Qt::AlignBottom);
    stack_->addWidget(list_);
    stack_->addWidget(empty_);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::large, space::large, space::large, space::medium);
    layout->setSpacing(space::medium);
    layout->addLayout(head);
    layout->addWidget(bar_);
    layout->addWidget(stack_, 1);
    layout->addWidget(undo_);

    for (const auto signal :
         {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(model_, signal, this, &TaskListPage::updateState);
    }
    connect(model_, &QAbstractItemModel::modelReset, this, &TaskListPage::updateState);
    connect(list_, &TaskListView::ticked, this, [this](const Uuid& task) { tick({task}); });
    connect(list_, &TaskListView::opened, this, &TaskListPage::opened);
    connect(list_, &TaskListView::chosen, this, &TaskListPage::chosen);
    connect(list_, &TaskListView::placed, this, &TaskListPage::place);
    connect(list_, &TaskListView::movedToDay, this, [this](const auto& tasks, Instant day) {
        commands_.setDue(tasks, TaskDue{.date = day});
    });
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(list_, &QWidget::customContextMenuRequested, this, &TaskListPage::showMenu);
    connect(bar_, &QuickAddBar::created, list_, &TaskListView::selectTask);
    connect(bar_, &QuickAddBar::left, list_, [this] { list_->setFocus(); });
    connect(undo_, &UndoBar::undone, this, [this] { commands_.undo(lastCompletion_); });
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] { updateState(); });
}

void TaskListPage::showPlace(const Place& place) {
    undo_->hide();
    useView(place);
    empty_->setContent(emptyContent(model_->view()));
    updateState();
}

void TaskListPage::useView(const Place& place) {
    QuickAddDefaults defaults;
    const auto use = [&](const QString& title, const TaskView& view) {
        title_->setText(title);
        model_->setView(view);
    };
    switch (place.kind) {
    case Place::Kind::today:
        defaults.dueDay = environment_.calendar().startOfDay(environment_.now());
        use("Today", TaskView::today());
        break;
    case Place::Kind::upcoming: use("Upcoming", TaskView::upcoming()); break;
    case Place::Kind::allTasks: use("All Tasks", TaskView::all()); break;
    case Place::Kind::completed: use("Completed", TaskView::completed()); break;
    case Place::Kind::project:
        if (const auto* project = environment_.context().find<CDProject>(place.id)) {
            defaults.projectName = QString::fromStdString(nameOf(project->name));
            use(defaults.projectName, TaskView::project(place.id));
            break;
        }
        [[fallthrough]];
    case Place::Kind::label:
        if (const auto* label = environment_.context().find<CDTag>(place.id)) {
            defaults.label = QString::fromStdString(nameOf(label->name));
            use(defaults.label, TaskView::label(nameOf(label->name)));
            break;
        }
        [[fallthrough]];
    default: use("Inbox", TaskView::inbox());
    }
    bar_->setDefaults(std::move(defaults));
}

void TaskListPage::updateState() {
    const std::size_t count = model_->taskCount();
    const bool isEmpty = model_->rowCount() == 0;
    count_->setText(
        isEmpty      ? QString()
        : count == 1 ? QString("1 task")
                     : QString("%L1 tasks").arg(count));
    stack_->setCurrentWidget(isEmpty ? static_cast<QWidget*>(empty_) : list_);
}

std::vector<Uuid> TaskListPage::selectedTasks() const { return list_->selectedTasks(); }

void TaskListPage::tick(const std::vector<Uuid>& tasks) {
    std::vector<Uuid> open;
    for (const Uuid& id : tasks) {
        const auto* task = environment_.context().find<CDTask>(id);
        if (task != nullptr && !task->completedAt) open.push_back(id);
    }
    if (open.empty()) {
        commands_.reopen(tasks);
        return;
    }
    list_->drawTicks(open);
    lastCompletion_ = commands_.complete(open);
    undo_->offer(lastCompletion_.sentence());
}

void TaskListPage::tickSelected() { tick(selectedTasks()); }

void TaskListPage::openSelected() {
    const auto tasks = selectedTasks();
    if (!tasks.empty()) emit opened(tasks.front());
}

QPoint TaskListPage::placeOfCurrent() const {
    const QRect line = list_->visualRect(list_->currentIndex());
    return list_->viewport()->mapToGlobal(line.bottomLeft() + QPoint(space::vast, 0));
}

void TaskListPage::askDue() {
    const auto tasks = selectedTasks();
    if (tasks.empty()) return;
    const auto* first = environment_.context().find<CDTask>(tasks.front());
    auto* const popup = WhenPopup::forDue(environment_, this);
    connect(popup, &WhenPopup::picked, this, [this, tasks](const std::optional<TaskDue>& due) {
        commands_.setDue(tasks, due);
    });
    popup->open(placeOfCurrent(), first == nullptr ? std::nullopt : first->dueDate.get());
}

void TaskListPage::askProject() {
    const auto tasks = selectedTasks();
    if (tasks.empty()) return;
    auto* const picker = new ProjectPicker(environment_, window());
    connect(picker, &ProjectPicker::projectChosen, this, [this, tasks](const Uuid& project) {
        commands_.move(tasks, project);
    });
    picker->open();
}

void TaskListPage::setPriority(TaskPriority priority) {
    commands_.setPriority(selectedTasks(), priority);
}

void TaskListPage::removeSelected() {
    const auto tasks = selectedTasks();
    if (tasks.empty()) return;
    const QModelIndex first = model_->indexOf(tasks.front());
    const QString what = tasks.size() == 1
                             ? QString("“%1”").arg(shownTitle(model_->line(first).title))
                             : QString("%1 tasks").arg(tasks.size());
    auto* const question = new QMessageBox(
        QMessageBox::NoIcon,
        "Delete tasks",
        QString("Delete %1 and the subtasks below?").arg(what),
        QMessageBox::Cancel,
        this);
    question->setObjectName("deleteTasks");
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setInformativeText("Tasks do not go to the trash. This cannot be undone.");
    auto* const button = question->addButton("Delete Permanently", QMessageBox::DestructiveRole);
    connect(button, &QPushButton::clicked, this, [this, tasks] { commands_.remove(tasks); });
    question->open();
}

void TaskListPage::place(const std::vector<Uuid>& tasks, const std::optional<Uuid>& before) {
    if (tasks.empty()) return;
    const auto* first = environment_.context().find<CDTask>(tasks.front());
    if (first == nullptr) return;
    const auto isMoved = [&](const Uuid& task) { return std::ranges::count(tasks, task) > 0; };
    const bool isSubtask = first->parent != nullptr;
    const CDTask* const parent = first->parent;

    // Those of the same level in their present order, the moved ones taken out and put in again.
    std::vector<Uuid> order;
    bool isPut = false;
    const auto put = [&] {
        if (!isPut) order.insert(order.end(), tasks.begin(), tasks.end());
        isPut = true;
    };
    for (int row = 0; row < model_->rowCount(); ++row) {
        const TaskRow& line = model_->line(row);
        if (before == line.id) put();
        if (!line.isTask() || line.isSubtask != isSubtask || isMoved(line.id)) continue;
        const auto* task = environment_.context().find<CDTask>(line.id);
        if (task != nullptr && task->parent == parent) order.push_back(line.id);
    }
    put();
    commands_.reorder(order);
}

void TaskListPage::showMenu(const QPoint& place) {
    if (selectedTasks().empty()) return;
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon("task-done"), "Complete or Reopen", this, &TaskListPage::tickSelected);
    menu->addAction(icon("open"), "Open", this, &TaskListPage::openSelected);
    menu->addAction(icon("calendar"), "Due Date…", this, &TaskListPage::askDue);
    menu->addAction(icon("project"), "Move to Project…", this, &TaskListPage::askProject);
    QMenu* const priorities = menu->addMenu(icon("flag"), "Priority");
    for (const int number : {1, 2, 3, 4}) {
        const auto priority = static_cast<TaskPriority>(number);
        const QString title = number == 4 ? QString("None") : QString("Priority %1").arg(number);
        const QString name = number == 4 ? "flag" : "flag-full";
        priorities->addAction(
            icon(name, Theme::colors().priority[number - 1]), title, this, [this, priority] {
                setPriority(priority);
            });
    }
    menu->addAction(
        icon("duplicate"), "Duplicate", this, [this] { commands_.duplicate(selectedTasks()); });
    menu->addSeparator();
    menu->addAction(icon("trash", Ink::danger), "Delete…", this, &TaskListPage::removeSelected);
    menu->popup(list_->viewport()->mapToGlobal(place));
}

}  // namespace tesserine::app
