#include "app/tasks/TaskComparison.h"

#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/look/Separator.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskWords.h"
#include "core/tasks/RecurrenceRule.h"
#include "core/tasks/TaskService.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {
namespace {

constexpr QSize usualSize(640, 500);

/// A version as a person reads it, in the order of `names`.
QStringList linesOf(const TaskVersion& version, const TaskWords& words) {
    const auto date = [&words](const std::optional<Instant>& at, bool hasTime) {
        return at ? words.longDue({.date = *at, .hasTime = hasTime}) : QString("None");
    };
    const auto rule = RecurrenceRule::fromStorageString(version.recurrenceRule);
    return {
        QString::fromStdString(version.title),
        date(version.dueDate, version.dueHasTime),
        rule ? QString::fromStdString(rule->description()) : QString("Never"),
        date(version.reminderAt, true),
        version.priority < 4 ? QString("Priority %1").arg(version.priority) : QString("None"),
        version.isDone ? "Yes" : "No",
        version.notes.empty() ? "None" : QString::fromStdString(version.notes),
        date(version.updatedAt, true)};
}

const QStringList names{
    "Title", "Due", "Repeats", "Reminder", "Priority", "Completed", "Notes", "Changed"};

}  // namespace

TaskComparison::TaskComparison(AppEnvironment& environment, TaskConflict conflict, QWidget* parent)
    : QDialog(parent), environment_(environment), conflict_(std::move(conflict)) {
    setObjectName("taskComparison");
    setWindowTitle("Compare versions");
    setAttribute(Qt::WA_DeleteOnClose);
    build();
    resize(usualSize);
}

void TaskComparison::build() {
    const TaskWords words(environment_.now(), environment_.calendar());
    const QStringList own = linesOf(conflict_.present, words);
    const QStringList other = linesOf(conflict_.other, words);

    auto* const page = new QWidget(this);
    auto* const grid = new QGridLayout(page);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(space::large);
    grid->setVerticalSpacing(space::small);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    grid->addWidget(makeText("The other version", TextRole::emphasis, page), 0, 1);
    grid->addWidget(makeText("My version", TextRole::emphasis, page), 0, 2);
    for (int i = 0; i < names.size(); ++i) {
        grid->addWidget(new Separator(Qt::Horizontal, page), grid->rowCount(), 0, 1, 3);
        addLine(*grid, names[i], other[i], own[i]);
    }
    grid->setRowStretch(grid->rowCount(), 1);
    auto* const area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setAccessibleName("Both versions");
    area->setWidgetResizable(true);
    area->setWidget(page);

    const Uuid task = conflict_.task;
    const Clock& clock = environment_.clock();
    auto* const close = makeMainButton("Close", this);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close);
    buttons->addWidget(makeButton("Use this version", "useOther", [&clock, task](auto& conflicts) {
        conflicts.useOtherVersion(task, clock);
    }));
    buttons->addWidget(makeButton("Keep both", "keepBoth", [&clock, task](auto& conflicts) {
        conflicts.keepBoth(task, clock);
    }));
    buttons->addWidget(makeButton("Keep my version", "keepMine", [task](auto& conflicts) {
        conflicts.useThisVersion(task);
    }));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::huge, space::huge, space::huge, space::large);
    column->setSpacing(space::large);
    column->addWidget(makeHint(
        "Another device changed this task at the same time. A version that is not chosen is gone "
        "afterwards; with “Keep both” it becomes a task of its own.",
        this));
    column->addWidget(area, 1);
    column->addLayout(buttons);
}

/// What is the same on both sides stands back.
void TaskComparison::addLine(
    QGridLayout& grid, const QString& name, const QString& other, const QString& own) {
    QWidget* const page = grid.parentWidget();
    const int row = grid.rowCount();
    grid.addWidget(makeHint(name, page), row, 0, Qt::AlignTop);
    const bool isSame = own == other;
    for (const auto& [column, text] : {std::pair(1, other), std::pair(2, own)}) {
        QLabel* const shown = makeText(text, isSame ? TextRole::body : TextRole::emphasis, page);
        if (isSame) setTone(*shown, Tone::secondary);
        shown->setAccessibleName(name + ": " + text);
        grid.addWidget(shown, row, column, Qt::AlignTop);
    }
}

/// Whether no version came in meanwhile that nobody has seen here.
bool TaskComparison::isAsShown(TaskConflicts& conflicts) const {
    const auto now = conflicts.of(conflict_.task);
    const TaskWords words(environment_.now(), environment_.calendar());
    return now && linesOf(now->present, words) == linesOf(conflict_.present, words)
           && linesOf(now->other, words) == linesOf(conflict_.other, words);
}

QPushButton* TaskComparison::makeButton(const QString& title, const char* name, Choice choice) {
    auto* const button = new QPushButton(title, this);
    button->setObjectName(name);
    connect(button, &QPushButton::clicked, this, [this, choice = std::move(choice)] {
        TaskConflicts conflicts(environment_.context());
        if (!isAsShown(conflicts)) {
            showNotice(parentWidget(), "The task was changed meanwhile. Compare it again.");
            return reject();
        }
        choice(conflicts);
        if (environment_.save(this)) accept();
    });
    return button;
}

}  // namespace tesserine::app
