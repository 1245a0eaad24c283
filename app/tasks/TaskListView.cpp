#include "app/tasks/TaskListView.h"

#include "app/look/DragPicture.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskListModel.h"

#include <QApplication>
#include <QDrag>
#include <QDragMoveEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QVariantAnimation>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int tickMilliseconds = 280;

}  // namespace

bool isMotionReduced(AppEnvironment& environment) {
    if (environment.preferences().boolean("tesserine.reduceMotion").value_or(false)) return true;
    return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) == 0;
}

TaskListView::TaskListView(AppEnvironment& environment, TaskListModel& model, QWidget* parent)
    : QListView(parent),
      environment_(environment),
      model_(model),
      delegate_(new TaskDelegate(
          environment,
          [this](const Uuid& task) -> std::optional<double> {
              const auto tick = ticks_.find(task);
              if (tick == ticks_.end()) return std::nullopt;
              return tick->second->currentValue().toDouble();
          },
          this)) {
    setObjectName("taskList");
    setAccessibleName("Tasks");
    setModel(&model_);
    setItemDelegate(delegate_);
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDropIndicatorShown(false);
    setMouseTracking(true);
    connect(&model_, &QAbstractItemModel::rowsRemoved, this, &TaskListView::selectNext);
    connect(&model_, &TaskListModel::aboutToBeReadAnew, this, &TaskListView::rememberSelection);
    connect(&model_, &TaskListModel::readAnew, this, &TaskListView::putSelectionBack);
    connect(&model_, &TaskListModel::settled, this, &TaskListView::selectAwaited);
    setResizeMode(QListView::Adjust);
}

// Selection

std::vector<Uuid> TaskListView::selectedTasks() const {
    return model_.tasksOf(selectionModel()->selectedIndexes());
}

void TaskListView::selectTask(const Uuid& task) {
    awaited_ = task;
    selectAwaited();
}

bool TaskListView::lists(const Uuid& task) const { return model_.belongs(task); }

void TaskListView::selectAwaited() {
    if (!awaited_) return;
    const QModelIndex index = model_.indexOf(*awaited_);
    if (index.isValid() || model_.taskCount()) awaited_.reset();
    if (!index.isValid()) return;
    setCurrentIndex(index);
    scrollTo(index);
}

void TaskListView::selectionChanged(
    const QItemSelection& selected, const QItemSelection& deselected) {
    QListView::selectionChanged(selected, deselected);
    const auto tasks = selectedTasks();
    emit chosen(tasks.size() == 1 ? std::optional(tasks.front()) : std::nullopt);
}

void TaskListView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) {
    const int current = currentIndex().row();
    const bool goes = start <= current && current <= end;
    next_ = goes ? taskBeside(start, end) : currentIndex();
    selectsNext_ = !selectedTasks().empty();
    QListView::rowsAboutToBeRemoved(parent, start, end);
}

/// The task that takes the place of the lines: that below them, else that above; never a heading.
/// In the place of a subtask comes one of the same task, or that task.
QModelIndex TaskListView::taskBeside(int first, int last) const {
    const TaskLine& gone = model_.at(first);
    for (int row = last + 1; row < model_.rowCount(); ++row) {
        const TaskLine& below = model_.at(row);
        if (gone.kind == TaskLine::Kind::subtask && below.place.id != gone.place.id) break;
        if (below.isTask()) return model_.index(row);
    }
    for (int row = first - 1; row >= 0; --row) {
        if (model_.at(row).isTask()) return model_.index(row);
    }
    return {};
}

void TaskListView::selectNext() {
    if (next_.isValid()) selectionModel()->setCurrentIndex(next_, QItemSelectionModel::NoUpdate);
    if (!selectsNext_ || !next_.isValid() || !selectedTasks().empty()) return;
    selectionModel()->select(next_, QItemSelectionModel::Select);
}

void TaskListView::rememberSelection() {
    remembered_ = selectedTasks();
    const QModelIndex top = indexAt(viewport()->rect().topLeft() + QPoint(1, 1));
    rememberedTop_.reset();
    if (top.isValid() && top.row() > 0) rememberedTop_ = model_.at(top.row()).id;
}

void TaskListView::putSelectionBack() {
    QItemSelection selection;
    for (const Uuid& task : remembered_) {
        const QModelIndex index = model_.indexOf(task);
        if (index.isValid()) selection.select(index, index);
    }
    if (!selection.isEmpty()) {
        const QModelIndex current = selection.indexes().front();
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
        selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    }
    const QModelIndex top = rememberedTop_ ? model_.indexOf(*rememberedTop_) : QModelIndex();
    if (top.isValid()) scrollTo(top, PositionAtTop);
}

/// The heading of the first task of a group comes into view with it.
void TaskListView::scrollTo(const QModelIndex& index, ScrollHint hint) {
    const bool isFirst = index.row() > 0 && !model_.at(index.row() - 1).isTask();
    if (isFirst && hint == EnsureVisible) QListView::scrollTo(index.siblingAtRow(index.row() - 1));
    QListView::scrollTo(index, hint);
}

/// A heading cannot be chosen; a task stands below it.
QModelIndex TaskListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const QModelIndex to = QListView::moveCursor(action, modifiers);
    if (!to.isValid() || model_.at(to.row()).isTask()) return to;
    const bool isUp = action == MoveUp || action == MovePrevious || action == MovePageUp;
    return isUp && to.row() > 0 ? to.siblingAtRow(to.row() - 1) : to.siblingAtRow(to.row() + 1);
}

/// Letters are commands in a list of tasks; comparing them with every title would take long.
void TaskListView::keyboardSearch(const QString& /*text*/) {}

// Ticks

void TaskListView::drawTicks(const std::vector<Uuid>& tasks) {
    if (isMotionReduced(environment_)) return;
    for (const Uuid& task : tasks) {
        if (ticks_.contains(task) || !model_.indexOf(task).isValid()) continue;
        model_.hold(task);
        auto* const animation = new QVariantAnimation(this);
        animation->setStartValue(0.0);
        animation->setEndValue(1.0);
        animation->setDuration(tickMilliseconds);
        animation->setEasingCurve(QEasingCurve::OutCubic);
        connect(animation, &QVariantAnimation::valueChanged, this, [this, task] {
            update(model_.indexOf(task));
        });
        connect(animation, &QVariantAnimation::finished, this, [this, task, animation] {
            ticks_.erase(task);
            animation->deleteLater();
            model_.release(task);
        });
        ticks_.emplace(task, animation);
        animation->start();
    }
}

// Mouse and keys

TaskDelegate::Part TaskListView::partAt(const QPoint& place) const {
    const QModelIndex index = indexAt(place);
    if (!index.isValid()) return TaskDelegate::Part::line;
    return delegate_->partAt(place, visualRect(index), model_.line(index));
}

void TaskListView::mousePressEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    const TaskDelegate::Part part = partAt(event->pos());
    if (event->button() != Qt::LeftButton || part == TaskDelegate::Part::line) {
        QListView::mousePressEvent(event);
    } else if (part == TaskDelegate::Part::circle) {
        emit ticked(model_.at(index.row()).id);
    } else {
        const TaskRow row = model_.line(index);
        model_.setExpanded(row.id, !row.isExpanded);
    }
}

void TaskListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    const bool isTask = index.isValid() && model_.at(index.row()).isTask();
    const TaskDelegate::Part part = partAt(event->pos());
    // The first press ticked; by now the line of the next task may stand there.
    if (part == TaskDelegate::Part::circle) return;
    if (isTask && part == TaskDelegate::Part::line) {
        emit opened(model_.at(index.row()).id);
    } else {
        mousePressEvent(event);
    }
}

bool TaskListView::setExpanded(bool isExpanded) {
    const QModelIndex index = currentIndex();
    if (!index.isValid()) return false;
    const TaskRow row = model_.line(index);
    if (row.subtaskCount == 0 || row.isExpanded == isExpanded) return false;
    model_.setExpanded(row.id, isExpanded);
    return true;
}

/// Where the keys have just come to the list, the first task is framed but not selected.
bool TaskListView::selectCurrent() {
    if (selectionModel()->hasSelection() || !currentIndex().isValid()) return false;
    selectionModel()->select(currentIndex(), QItemSelectionModel::Select);
    return true;
}

void TaskListView::keyPressEvent(QKeyEvent* event) {
    const bool isLeftToRight = layoutDirection() == Qt::LeftToRight;
    const int expands = isLeftToRight ? Qt::Key_Right : Qt::Key_Left;
    const int collapses = isLeftToRight ? Qt::Key_Left : Qt::Key_Right;
    if (event->key() == expands && setExpanded(true)) return;
    if (event->key() == collapses && setExpanded(false)) return;
    const bool isArrow = event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
    if (isArrow && event->modifiers() == Qt::NoModifier && selectCurrent()) return;
    QListView::keyPressEvent(event);
}

// Drag and drop

bool TaskListView::isManual() const {
    const TaskView::Kind kind = model_.view().kind();
    return kind != TaskView::Kind::today && kind != TaskView::Kind::upcoming
           && kind != TaskView::Kind::completed;
}

bool TaskListView::acceptsDrops() const {
    return isManual() || model_.view().kind() == TaskView::Kind::upcoming;
}

int TaskListView::dropRow(const QPoint& place) const {
    const QModelIndex index = indexAt(place);
    if (!index.isValid()) return model_.rowCount();
    const bool isLowerHalf = place.y() > visualRect(index).center().y();
    return index.row() + (isLowerHalf ? 1 : 0);
}

std::optional<Instant> TaskListView::dayAt(int row) const {
    return row > 0 ? model_.at(row - 1).place.day : std::nullopt;
}

void TaskListView::startDrag(Qt::DropActions /*actions*/) {
    const QModelIndexList indexes = selectionModel()->selectedIndexes();
    if (indexes.isEmpty()) return;
    const QString text = indexes.size() == 1 ? shownTitle(model_.line(indexes.front()).title)
                                             : QString("%1 tasks").arg(indexes.size());
    const QPixmap picture = dragPicture(text, *this);
    auto* const drag = new QDrag(this);
    drag->setMimeData(model_.mimeData(indexes));
    drag->setPixmap(picture);
    drag->setHotSpot({space::medium, picture.deviceIndependentSize().toSize().height() / 2});
    drag->exec(Qt::MoveAction);
}

void TaskListView::dragEnterEvent(QDragEnterEvent* event) {
    if (acceptsDrops() && event->mimeData()->hasFormat(tasksMimeType)) {
        event->acceptProposedAction();
    }
}

void TaskListView::dragMoveEvent(QDragMoveEvent* event) {
    QListView::dragMoveEvent(event);  // scrolls at the edges
    dropRow_ = dropRow(event->position().toPoint());
    viewport()->update();
    event->acceptProposedAction();
}

void TaskListView::dragLeaveEvent(QDragLeaveEvent* event) {
    QListView::dragLeaveEvent(event);
    dropRow_.reset();
    viewport()->update();
}

void TaskListView::dropEvent(QDropEvent* event) {
    const int row = dropRow(event->position().toPoint());
    const auto tasks = draggedTasks(*event->mimeData());
    dropRow_.reset();
    viewport()->update();
    event->acceptProposedAction();
    if (isManual()) {
        std::optional<Uuid> before;
        if (row < model_.rowCount()) before = model_.at(row).id;
        emit placed(tasks, before);
    } else if (const auto day = dayAt(row)) {
        emit movedToDay(tasks, *day);
    }
}

void TaskListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (!dropRow_ || model_.rowCount() == 0) return;
    const bool isBehind = *dropRow_ >= model_.rowCount();
    const QRect line = visualRect(model_.index(isBehind ? model_.rowCount() - 1 : *dropRow_));
    const int y = isBehind ? line.bottom() : line.top();
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::colors().accent, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(line.left() + space::medium, y, line.right() - space::medium, y);
}

}  // namespace tesserine::app
