#include "app/tasks/TaskDetail.h"

#include "app/commands/NoteSwitcher.h"
#include "app/look/EmptyState.h"
#include "app/look/IconButton.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/ConflictNotice.h"
#include "app/tasks/FormParts.h"
#include "app/tasks/GrowingText.h"
#include "app/tasks/LabelsField.h"
#include "app/tasks/PriorityButtons.h"
#include "app/tasks/ProjectPicker.h"
#include "app/tasks/RecurrencePopup.h"
#include "app/tasks/SubtaskList.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskHistory.h"
#include "app/tasks/TaskRow.h"
#include "app/tasks/TaskWords.h"
#include "app/tasks/TickButton.h"
#include "app/tasks/WhenPopup.h"
#include "core/tasks/TaskSnapshot.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int leastTitleLines = 1;
constexpr int mostTitleLines = 6;
constexpr int leastDetailLines = 4;
constexpr int mostDetailLines = 40;

std::optional<TaskDue> dueOf(const CDTask& task) {
    if (!task.dueDate) return std::nullopt;
    return TaskDue{.date = *task.dueDate, .hasTime = task.dueHasTime.valueOr(false)};
}

EmptyState::Content nothingSelected() {
    return {
        "task",
        "No task selected",
        "Select a task to see its date, notes and subtasks. Space ticks it, D sets its date, M "
        "moves it to a project."};
}

}  // namespace

TaskDetail::TaskDetail(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      conflict_(new ConflictNotice(environment, this)),
      stack_(new QStackedWidget(this)),
      hint_(new EmptyState(nothingSelected(), this)),
      circle_(new TickButton(this)),
      title_(new GrowingText(GrowingText::Lines::one, leastTitleLines, mostTitleLines, this)),
      due_(valueButton("Due date", this)),
      recurrence_(valueButton("Repetition", this)),
      reminder_(valueButton("Reminder", this)),
      project_(valueButton("Project", this)),
      note_(valueButton("Linked note", this)),
      unlink_(new IconButton("close", "Do not link this note", this)),
      priority_(new PriorityButtons(this)),
      labels_(new LabelsField([this] { return labelNames(); }, this)),
      subtasks_(new SubtaskList(environment, this)),
      details_(new GrowingText(GrowingText::Lines::many, leastDetailLines, mostDetailLines, this)),
      history_(new QLabel(this)) {
    setObjectName("taskDetail");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    title_->setObjectName("taskTitle");
    title_->setAccessibleName("Title");
    title_->setPlaceholderText("Untitled task");
    title_->setFont(Theme::font(TextRole::heading));
    details_->setObjectName("taskDetails");
    details_->setAccessibleName("Notes");
    details_->setPlaceholderText("Add notes");
    history_->setFont(Theme::font(TextRole::caption));
    history_->setForegroundRole(QPalette::PlaceholderText);

    auto* const area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(makeForm());
    stack_->addWidget(area);
    stack_->addWidget(hint_);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(conflict_);
    layout->addWidget(stack_);

    followFields();
    connect(&environment, &AppEnvironment::libraryChanged, this, [this](const auto& changes) {
        const auto concerns = [](const ObjectChange& change) {
            return change.entity == EntityKind::task || change.entity == EntityKind::project
                   || change.entity == EntityKind::tag || change.entity == EntityKind::syncMeta;
        };
        if (task_ && std::ranges::any_of(changes, concerns)) load();
    });
    connect(&environment, &AppEnvironment::calendarChanged, this, &TaskDetail::load);
    showTask({});
}

QWidget* TaskDetail::makeForm() {
    auto* const form = new QWidget(this);
    auto* const close = new IconButton("close", "Close task", form);
    auto* const head = new QHBoxLayout;
    head->setSpacing(space::small);
    head->addWidget(circle_, 0, Qt::AlignTop);
    head->addWidget(title_, 1);
    head->addWidget(close, 0, Qt::AlignTop);

    auto* const layout = new QVBoxLayout(form);
    layout->setContentsMargins(space::large, space::large, space::large, space::large);
    layout->setSpacing(space::tiny);
    layout->addLayout(head);
    layout->addSpacing(space::small);
    layout->addLayout(formLine("calendar", due_, form));
    layout->addLayout(formLine("repeat", recurrence_, form));
    layout->addLayout(formLine("bell", reminder_, form));
    layout->addLayout(formLine("project", project_, form));
    layout->addLayout(formLine("flag", priority_, form));
    layout->addLayout(formLine("label", labels_, form));
    auto* const note = formLine("note", note_, form);
    note->addWidget(unlink_);
    layout->addLayout(note);
    layout->addSpacing(space::medium);
    layout->addWidget(sectionTitle("Subtasks", form));
    layout->addWidget(subtasks_);
    layout->addSpacing(space::medium);
    layout->addWidget(sectionTitle("Notes", form));
    layout->addWidget(details_);
    layout->addStretch();
    layout->addWidget(history_);

    connect(close, &IconButton::clicked, this, &TaskDetail::closed);
    return form;
}

void TaskDetail::followFields() {
    connect(circle_, &TickButton::clicked, this, [this] {
        if (task_) emit ticked(*task_);
    });
    title_->installEventFilter(this);
    connect(title_, &GrowingText::settled, this, &TaskDetail::saveTexts);
    connect(title_, &GrowingText::entered, details_, [this] { details_->setFocus(); });
    connect(details_, &GrowingText::settled, this, &TaskDetail::saveTexts);
    connect(due_, &QPushButton::clicked, this, &TaskDetail::askDue);
    connect(recurrence_, &QPushButton::clicked, this, &TaskDetail::askRecurrence);
    connect(reminder_, &QPushButton::clicked, this, &TaskDetail::askReminder);
    connect(project_, &QPushButton::clicked, this, &TaskDetail::askProject);
    connect(note_, &QPushButton::clicked, this, &TaskDetail::openNote);
    connect(unlink_, &IconButton::clicked, this, [this] { linkNote(task_, nullptr); });
    connect(priority_, &PriorityButtons::chosen, this, [this](TaskPriority priority) {
        change(task_, [&](CDTask& task) { environment_.tasks().setPriority(task, priority); });
    });
    connect(labels_, &LabelsField::added, this, [this](const QString& label) {
        change(task_, [&](CDTask& task) {
            environment_.tasks().addLabel(environment_.context(), task, label.toStdString());
        });
    });
    connect(labels_, &LabelsField::removed, this, [this](const QString& label) {
        change(task_, [&](CDTask& task) {
            for (CDTag* tag : task.labels.all()) {
                if (tag->name == label.toStdString()) environment_.tasks().removeLabel(task, *tag);
            }
        });
    });
}

// Showing

CDTask* TaskDetail::find() const {
    return task_ ? environment_.context().find<CDTask>(*task_) : nullptr;
}

void TaskDetail::showSeveral(std::size_t count) {
    showTask({});
    hint_->setContent(
        {"all-tasks",
         QString("%L1 tasks selected").arg(count),
         "Space ticks them, D sets their date, M moves them to a project, 1 to 4 set their "
         "priority."});
}

void TaskDetail::showTask(const std::optional<Uuid>& task) {
    if (task == task_ && task) return;
    hint_->setContent(nothingSelected());
    flush();
    task_ = task;
    title_->setShownText({});
    details_->setShownText({});
    savedTitle_.reset();
    load();
}

void TaskDetail::editTitle() {
    title_->setFocus();
    title_->moveCursor(QTextCursor::End);
}

void TaskDetail::load() {
    const CDTask* const task = find();
    stack_->setCurrentIndex(task == nullptr ? 1 : 0);
    if (task == nullptr) {
        saveTexts();
        task_.reset();
    }
    conflict_->showTask(task_);
    if (task == nullptr) return;
    const QString title = QString::fromStdString(task->title.valueOr(""));
    // A space behind what was saved a moment ago is the beginning of the next word.
    const bool isSame = title_->toPlainText().simplified() == title;
    if (!title_->isEdited() && !isSame) title_->setShownText(title);
    if (!details_->isEdited()) {
        shownDetails_ = QString::fromStdString(task->details.valueOr(""));
        details_->setShownText(shownDetails_);
    }
    loadFields(*task);
    const bool isSubtask = task->parent != nullptr;
    subtasks_->setVisible(!isSubtask);
    if (!isSubtask) subtasks_->showSubtasks(*task);
}

void TaskDetail::loadFields(const CDTask& task) {
    const TaskWords words(environment_.now(), environment_.calendar());
    const auto priority = taskPriority(task.priority.valueOr(4));
    const bool isCompleted = task.completedAt.get().has_value();
    circle_->setTask(QString::fromStdString(task.title.valueOr("")), priority, isCompleted);
    priority_->setPriority(priority);

    const auto due = dueOf(task);
    setValue(*due_, due ? words.longDue(*due) : QString(), "No date");
    const auto rule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr(""));
    setValue(
        *recurrence_,
        rule ? QString::fromStdString(rule->description()) : QString(),
        "Does not repeat");
    const auto& reminder = task.reminderAt.get();
    setValue(
        *reminder_,
        reminder ? words.longDue({.date = *reminder, .hasTime = true}) : QString(),
        "No reminder");
    const CDProject* const project = task.project;
    setValue(
        *project_,
        project != nullptr ? QString::fromStdString(project->name.valueOr("")) : QString(),
        "No project");
    const CDNote* const note = task.linkedNote;
    setValue(
        *note_,
        note != nullptr ? QString::fromStdString(note->title.valueOr("")) : QString(),
        note != nullptr ? "Untitled note" : "No linked note");
    note_->setToolTip(note != nullptr ? "Open the linked note" : "Link a note");
    unlink_->setVisible(note != nullptr);

    QStringList labels;
    for (const std::string& label : tesserine::labelNames(task, environment_.collator())) {
        labels += QString::fromStdString(label);
    }
    labels_->setLabels(labels);
    const auto date = [&](Instant at) {
        return QString::fromStdString(environment_.calendar().longDate(at));
    };
    QString history = "Created " + date(task.createdAt.valueOr({}));
    if (isCompleted) history += " · Completed " + date(*task.completedAt);
    history_->setText(history);
}

QStringList TaskDetail::labelNames() const {
    QStringList names;
    environment_.context().visitRows<CDTag>({.sort = {{"name"}}}, [&](const ListedRow& row) {
        if (const auto name = row.get(&CDTag::name)) names += QString::fromStdString(*name);
    });
    return names;
}

/// What is typed is saved when its field loses the keys.
void TaskDetail::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Escape) return QWidget::keyPressEvent(event);
    if (title_->hasFocus()) dropTypedTitle();
    emit left();
}

/// Another program of the desktop may have had the keys meanwhile, which begins nothing anew.
bool TaskDetail::eventFilter(QObject* watched, QEvent* event) {
    const bool isFocus = watched == title_ && event->type() == QEvent::FocusIn;
    if (isFocus && static_cast<QFocusEvent*>(event)->reason() != Qt::ActiveWindowFocusReason) {
        const CDTask* const task = find();
        titleBefore_ = task == nullptr ? "" : task->title.valueOr("");
        savedTitle_.reset();
    }
    return QWidget::eventFilter(watched, event);
}

/// Also what a pause of typing has saved, unless the title is another one again since then.
void TaskDetail::dropTypedTitle() {
    const CDTask* const task = find();
    if (task == nullptr) return;
    const std::string stored = task->title.valueOr("");
    const bool isSaved = savedTitle_ && *savedTitle_ == stored;
    title_->setShownText(QString::fromStdString(isSaved ? titleBefore_ : stored));
    if (!isSaved || stored == titleBefore_) return;
    TaskHistory::of(environment_).record({.tasks = {*task_}, .endsTyping = true}, this, [this] {
        environment_.tasks().setTitle(*find(), titleBefore_);
        return TaskHistory::Made{};
    });
}

void TaskDetail::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) load();
}

// Changing

bool TaskDetail::flush() {
    labels_->take();
    return saveTexts() && subtasks_->flush();
}

/// What another program wrote into the notes while they were typed into is put behind them.
void TaskDetail::keepForeignDetails(const CDTask& task) {
    const QString theirs = QString::fromStdString(task.details.valueOr(""));
    const bool isForeign = theirs != shownDetails_ && theirs != details_->toPlainText();
    if (!isForeign || theirs.isEmpty()) return;
    const bool isContinued = !shownDetails_.isEmpty() && theirs.startsWith(shownDetails_);
    const int place = details_->textCursor().position();
    QTextCursor cursor(details_->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(isContinued ? theirs.mid(shownDetails_.size()) : "\n\n" + theirs);
    cursor.setPosition(place);
    details_->setTextCursor(cursor);
}

/// The task was deleted elsewhere: what was typed becomes another one, in the Inbox.
bool TaskDetail::keepAsNew() {
    environment_.tasks().create(
        environment_.context(),
        {.title = title_->toPlainText().simplified().toStdString(),
         .details = details_->toPlainText().toStdString()});
    task_.reset();  // it is kept once, whoever hears of the save
    const bool isSaved = environment_.save(this);
    if (isSaved) {
        showNotice(
            this,
            "This task was deleted elsewhere while you were writing. What you wrote is kept in a "
            "new task in the Inbox.");
    }
    return isSaved;
}

bool TaskDetail::saveTexts() {
    const bool isEdited = title_->isEdited() || details_->isEdited();
    if (!task_ || !isEdited) return true;
    CDTask* const task = find();
    const std::string title = title_->toPlainText().simplified().toStdString();
    try {
        if (task == nullptr) return keepAsNew();
        if (title_->isEdited()) TaskService::checkTitle(title);
    } catch (const TaskError& error) {
        showNotice(this, error.what());
        return false;
    }
    // What the field itself took back to the beginning need not be taken back once more.
    const auto isBack = [](const GrowingText& field) {
        return field.isEdited() && !field.document()->isUndoAvailable();
    };
    const TaskHistory::Affected affected{
        .tasks = {*task_}, .endsTyping = isBack(*title_) || isBack(*details_)};
    const bool isSaved = TaskHistory::of(environment_).record(affected, this, [&] {
        if (title_->isEdited()) {
            environment_.tasks().setTitle(*task, title);
            savedTitle_ = title;
        }
        if (details_->isEdited()) {
            keepForeignDetails(*task);
            environment_.tasks().setDetails(*task, details_->toPlainText().toStdString());
        }
        title_->document()->setModified(false);
        details_->document()->setModified(false);
        return TaskHistory::Made{};
    });
    if (const CDTask* const kept = find()) {
        shownDetails_ = QString::fromStdString(kept->details.valueOr(""));
    }
    return isSaved;
}

void TaskDetail::change(const std::optional<Uuid>& id, const std::function<void(CDTask&)>& change) {
    CDTask* const task = id ? environment_.context().find<CDTask>(*id) : nullptr;
    if (task == nullptr) return;
    TaskHistory::of(environment_).record({.tasks = {*id}, .withLabels = true}, this, [&] {
        change(*task);
        return TaskHistory::Made{};
    });
}

void TaskDetail::openNote() {
    const CDTask* const task = find();
    if (task == nullptr) return;
    if (const CDNote* const note = task->linkedNote) {
        emit noteChosen(*note->id);
        return;
    }
    auto* const switcher =
        new NoteSwitcher(environment_, window(), "Link a note, found by its title");
    connect(switcher, &NoteSwitcher::noteChosen, this, [this, asked = task_](const Uuid& id) {
        linkNote(asked, environment_.context().find<CDNote>(id));
    });
    switcher->open();
}

void TaskDetail::linkNote(const std::optional<Uuid>& id, CDNote* note) {
    change(id, [&](CDTask& task) {
        task.linkedNote = note;
        task.updatedAt = environment_.now();
    });
}

void TaskDetail::askDue() {
    const CDTask* const task = find();
    if (task == nullptr) return;
    auto* const popup = WhenPopup::forDue(environment_, this);
    connect(popup, &WhenPopup::picked, this, [this, asked = task_](const auto& due) {
        if (asked) TaskCommands(environment_, this).setDue({*asked}, due);
    });
    popup->open(due_->mapToGlobal(QPoint(0, due_->height())), task->dueDate);
}

void TaskDetail::askReminder() {
    const CDTask* const task = find();
    if (task == nullptr) return;
    auto* const popup = WhenPopup::forReminder(environment_, dueOf(*task), this);
    connect(popup, &WhenPopup::picked, this, [this, asked = task_](const auto& when) {
        const auto at =
            when ? std::optional(reminderTime(*when, environment_.calendar())) : std::nullopt;
        change(asked, [&](CDTask& changed) { environment_.tasks().setReminder(changed, at); });
    });
    popup->open(reminder_->mapToGlobal(QPoint(0, reminder_->height())), task->reminderAt);
}

void TaskDetail::askRecurrence() {
    const CDTask* const task = find();
    if (task == nullptr) return;
    auto* const popup =
        new RecurrencePopup(environment_.calendar(), task->dueDate, environment_.now(), this);
    connect(popup, &RecurrencePopup::picked, this, [this, asked = task_](const auto& rule) {
        change(asked, [&](CDTask& changed) {
            if (rule) {
                environment_.tasks().repeat(changed, *rule, environment_.calendar());
            } else {
                environment_.tasks().setRecurrence(changed, {});
            }
        });
    });
    popup->open(
        recurrence_->mapToGlobal(QPoint(0, recurrence_->height())),
        RecurrenceRule::fromStorageString(task->recurrenceRule.valueOr("")));
}

void TaskDetail::askProject() {
    if (find() == nullptr) return;
    auto* const picker = new ProjectPicker(environment_, window());
    connect(picker, &ProjectPicker::projectChosen, this, [this, asked = task_](const Uuid& id) {
        auto* const project = environment_.context().find<CDProject>(id);
        if (project == nullptr) return;
        change(asked, [&](CDTask& task) {
            environment_.tasks().moveToProject(environment_.context(), task, *project);
        });
    });
    picker->open();
}

}  // namespace tesserine::app
