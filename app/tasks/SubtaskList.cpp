#include "app/tasks/SubtaskList.h"

#include "app/look/HandKeysOn.h"
#include "app/look/IconButton.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskHistory.h"
#include "app/tasks/TickButton.h"
#include "core/tasks/TaskSnapshot.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {

/// One subtask: circle, title, button to delete.
class SubtaskList::Line final : public QWidget {
public:
    Line(const Uuid& subtask, SubtaskList& list)
        : QWidget(&list), id(subtask), circle_(new TickButton(this)), title_(new QLineEdit(this)) {
        title_->setFrame(false);
        title_->setAccessibleName("Subtask");
        title_->setPlaceholderText("Untitled task");
        auto* const away = new IconButton("close", "Delete subtask", this);
        away->setIconSize({12, 12});
        auto* const layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(space::small);
        layout->addWidget(circle_);
        layout->addWidget(title_, 1);
        layout->addWidget(away);
        connect(circle_, &TickButton::clicked, this, [this, &list] { list.tick(id); });
        connect(away, &IconButton::clicked, this, [this, &list] { list.remove(id); });
        connect(title_, &QLineEdit::editingFinished, this, [this, &list] { finish(list); });
    }

    void finish(SubtaskList& list) {
        if (!title_->isModified()) return;
        title_->setModified(false);
        list.rename(id, title_->text());
    }

    void show(const CDTask& subtask) {
        const QString title = QString::fromStdString(subtask.title.valueOr(""));
        const bool isDone = subtask.completedAt.get().has_value();
        circle_->setTask(title, taskPriority(subtask.priority.valueOr(4)), isDone);
        if (!title_->isModified()) title_->setText(title);
        QFont font = Theme::font(TextRole::body);
        font.setStrikeOut(isDone);
        title_->setFont(font);
        QWidget::show();
    }

    const Uuid id;

private:
    TickButton* const circle_;
    QLineEdit* const title_;
};

SubtaskList::SubtaskList(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      lines_(new QVBoxLayout),
      field_(new QLineEdit(this)) {
    field_->setObjectName("addSubtask");
    field_->setAccessibleName("Add a subtask");
    field_->setPlaceholderText("Add a subtask");
    field_->setFrame(false);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::hair);
    lines_->setSpacing(space::hair);
    layout->addLayout(lines_);
    layout->addWidget(field_);
    connect(field_, &QLineEdit::returnPressed, this, &SubtaskList::add);
}

void SubtaskList::showSubtasks(const CDTask& task) {
    if (task_ != task.id.get()) field_->clear();
    task_ = task.id;
    const auto subtasks = subtasksInOrder(task);
    const bool isSame =
        std::ranges::equal(subtasks, shown_, [](const CDTask* subtask, const Line* line) {
            return subtask->id == std::optional(line->id);
        });
    if (!isSame) rebuild(subtasks);
    for (std::size_t i = 0; i < shown_.size(); ++i) {
        shown_[i]->show(*subtasks[i]);
    }
}

void SubtaskList::rebuild(const std::vector<CDTask*>& subtasks) {
    std::vector<Line*> lines;
    for (const CDTask* subtask : subtasks) {
        const auto kept = std::ranges::find(shown_, *subtask->id, &Line::id);
        lines.push_back(kept == shown_.end() ? new Line(*subtask->id, *this) : *kept);
    }
    for (Line* line : shown_) {
        lines_->removeWidget(line);
        if (std::ranges::count(lines, line) != 0) continue;
        handKeysOn(*line, *this);  // not to the circle of the next one, which a space would tick
        line->hide();
        line->deleteLater();
    }
    for (Line* line : lines) {
        lines_->addWidget(line);
    }
    shown_ = std::move(lines);
}

bool SubtaskList::flush() {
    const auto lines = shown_;  // a change may bring others
    for (Line* line : lines) {
        line->finish(*this);
    }
    return add();
}

bool SubtaskList::add() {
    const QString title = field_->text().trimmed();
    auto* const parent = task_ ? environment_.context().find<CDTask>(*task_) : nullptr;
    if (title.isEmpty() || parent == nullptr) return true;
    try {
        TaskService::checkTitle(title.toStdString());
    } catch (const TaskError& error) {
        showNotice(this, error.what());
        return false;
    }
    field_->clear();
    return TaskHistory::of(environment_).record({}, this, [&] {
        const CDTask& made = environment_.tasks().create(
            environment_.context(), {.title = title.toStdString(), .parent = parent});
        return TaskHistory::Made{.tasks = {*made.id}};
    });
}

void SubtaskList::tick(const Uuid& subtask) {
    auto* const task = environment_.context().find<CDTask>(subtask);
    if (task == nullptr) return;
    const TaskCommands commands(environment_, this);
    task->completedAt ? commands.reopen({subtask}) : commands.complete({subtask});
}

void SubtaskList::rename(const Uuid& subtask, const QString& title) {
    auto* const task = environment_.context().find<CDTask>(subtask);
    if (task == nullptr) return;
    try {
        TaskHistory::of(environment_).record({{subtask}}, this, [&] {
            environment_.tasks().setTitle(*task, title.trimmed().toStdString());
            return TaskHistory::Made{};
        });
    } catch (const TaskError& error) {
        showNotice(this, error.what());
    }
}

void SubtaskList::remove(const Uuid& subtask) {
    TaskCommands(environment_, this).remove({subtask});
}

}  // namespace tesserine::app
