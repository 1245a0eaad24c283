#include "app/tasks/CalendarGrid.h"

#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskDelegate.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskWords.h"

#include <QApplication>
#include <QDrag>
#include <QDragMoveEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int wheelStep = 120;

int heightOf(TextRole role) { return QFontMetrics(Theme::font(role)).height(); }

/// Of the circle around the number of today.
int numberSide() { return heightOf(TextRole::emphasis) + space::tiny; }
int dayHeadHeight() { return numberSide() + space::tiny; }
int weekdaysHeight() { return heightOf(TextRole::caption) + space::medium; }
int lineHeight() { return heightOf(TextRole::caption) + space::tiny; }

}  // namespace

CalendarGrid::CalendarGrid(AppEnvironment& environment, CalendarModel& model, QWidget* parent)
    : QWidget(parent), environment_(environment), model_(model) {
    setObjectName("calendarGrid");
    setAccessibleName("Calendar");
    setFocusPolicy(Qt::StrongFocus);
    setAcceptDrops(true);
}

void CalendarGrid::refresh() {
    if (task_ && !isOnMarkedDay(*task_)) choose({});
    setAccessibleDescription(model_.spokenDay());
    update();
}

void CalendarGrid::choose(const std::optional<Uuid>& task) {
    if (task == task_) return;
    task_ = task;
    update();
    emit chosen(task);
}

bool CalendarGrid::isOnMarkedDay(const Uuid& task) const {
    if (model_.days().empty()) return false;
    return std::ranges::any_of(
        model_.days()[model_.dayIndex()].tasks,
        [&](const CalendarTask& shown) { return shown.id == task; });
}

// Where things stand

QRect CalendarGrid::areaOfDay(std::size_t day) const {
    const auto place = static_cast<int>(day);
    const int rows = static_cast<int>(model_.days().size()) / daysInWeek;
    // Edges are computed, not widths, so that what is left over spreads evenly.
    const auto x = [&](int column) { return column * width() / daysInWeek; };
    const auto y = [&](int row) {
        return weekdaysHeight() + row * (height() - weekdaysHeight()) / std::max(1, rows);
    };
    const int column = place % daysInWeek;
    const int row = place / daysInWeek;
    const QRect area(QPoint(x(column), y(row)), QPoint(x(column + 1) - 1, y(row + 1) - 1));
    return QStyle::visualRect(layoutDirection(), rect(), area);
}

std::size_t CalendarGrid::shownTaskCount(std::size_t day) const {
    const CalendarDay& shown = model_.days()[day];
    const int room = areaOfDay(day).height() - dayHeadHeight() - space::tiny;
    const auto lines = static_cast<std::size_t>(std::max(0, room / lineHeight()));
    if (shown.taskCount <= std::min(lines, shown.tasks.size())) return shown.taskCount;
    // The last line says how many more there are.
    return std::min(lines == 0 ? 0 : lines - 1, shown.tasks.size());
}

QRect CalendarGrid::areaOfLine(std::size_t day, std::size_t line) const {
    const QRect area = areaOfDay(day);
    const int top = area.top() + dayHeadHeight() + static_cast<int>(line) * lineHeight();
    return {area.left() + space::hair, top, area.width() - space::tiny, lineHeight() - 2};
}

QRect CalendarGrid::areaOf(const Uuid& task) const {
    for (std::size_t day = 0; day < model_.days().size(); ++day) {
        const auto& tasks = model_.days()[day].tasks;
        for (std::size_t line = 0; line < shownTaskCount(day); ++line) {
            if (tasks[line].id == task) return areaOfLine(day, line);
        }
    }
    return {};
}

std::optional<std::size_t> CalendarGrid::dayAt(const QPoint& place) const {
    for (std::size_t day = 0; day < model_.days().size(); ++day) {
        if (areaOfDay(day).contains(place)) return day;
    }
    return std::nullopt;
}

const CalendarTask* CalendarGrid::taskAt(const QPoint& place) const {
    const auto day = dayAt(place);
    if (!day) return nullptr;
    for (std::size_t line = 0; line < shownTaskCount(*day); ++line) {
        if (areaOfLine(*day, line).contains(place)) return &model_.days()[*day].tasks[line];
    }
    return nullptr;
}

QRect CalendarGrid::areaOfMore(std::size_t day) const {
    const std::size_t shown = shownTaskCount(day);
    return shown < model_.days()[day].taskCount ? areaOfLine(day, shown) : QRect();
}

// Painting

void CalendarGrid::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (model_.days().empty()) return;
    paintWeekdays(painter);
    for (std::size_t day = 0; day < model_.days().size(); ++day) {
        paintDay(painter, day);
    }
}

void CalendarGrid::paintWeekdays(QPainter& painter) const {
    painter.setFont(Theme::font(TextRole::caption));
    painter.setPen(Theme::colors().secondaryText);
    for (std::size_t column = 0; column < daysInWeek; ++column) {
        const int weekday = environment_.calendar().weekday(model_.days()[column].cell.date);
        const QRect day = areaOfDay(column);
        painter.drawText(
            QRect(day.left() + space::small, 0, day.width() - space::small, weekdaysHeight()),
            Qt::AlignLeading | Qt::AlignVCenter,
            shortWeekdayName(weekday));
    }
}

void CalendarGrid::paintDay(QPainter& painter, std::size_t day) const {
    const Colors& colors = Theme::colors();
    const CalendarDay& shown = model_.days()[day];
    const QRect area = areaOfDay(day);
    const bool isMarked = shown.cell.date == model_.day();

    painter.setPen(Qt::NoPen);
    painter.setBrush(shown.cell.isInDisplayedMonth ? colors.surface : colors.window);
    if (dropDay_ == day) painter.setBrush(colors.selection);
    painter.drawRect(area);
    painter.setPen(QPen(colors.line, 1));
    painter.drawLine(area.topLeft(), area.topRight());
    if (day % daysInWeek != 0) {
        painter.drawLine(
            layoutDirection() == Qt::LeftToRight ? area.topLeft() : area.topRight(),
            layoutDirection() == Qt::LeftToRight ? area.bottomLeft() : area.bottomRight());
    }
    if (isMarked) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(hasFocus() ? colors.accent : colors.secondaryText, hasFocus() ? 2 : 1));
        painter.drawRoundedRect(QRectF(area).adjusted(1.5, 1.5, -0.5, -0.5), 4, 4);
    }

    const int number = environment_.calendar().local(shown.cell.date).day;
    QRect circle(area.left() + space::tiny, area.top() + 3, numberSide(), numberSide());
    circle = QStyle::visualRect(layoutDirection(), area, circle);
    if (shown.cell.isToday) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.accent);
        painter.drawEllipse(circle);
    }
    painter.setFont(Theme::font(shown.cell.isToday ? TextRole::emphasis : TextRole::caption));
    painter.setPen(
        shown.cell.isToday              ? colors.onAccent
        : shown.cell.isInDisplayedMonth ? colors.text
                                        : colors.secondaryText);
    painter.drawText(circle, Qt::AlignCenter, QString::number(number));

    const std::size_t count = shownTaskCount(day);
    for (std::size_t line = 0; line < count; ++line) {
        paintTask(painter, areaOfLine(day, line), shown.tasks[line]);
    }
    if (count < shown.taskCount) {
        painter.setFont(Theme::font(TextRole::caption));
        painter.setPen(colors.secondaryText);
        paintName(
            painter,
            areaOfMore(day).adjusted(space::small, 0, -space::small, 0),
            QString("+%L1 more").arg(shown.taskCount - count));
    }
}

void CalendarGrid::paintTask(QPainter& painter, const QRect& area, const CalendarTask& task) const {
    const Colors& colors = Theme::colors();
    const bool isChosen = task.id == task_;
    const QColor mark = task.isOverdue ? colors.danger
                        : task.priority == TaskPriority::p4
                            ? colors.accent
                            : colors.priority[static_cast<int>(task.priority) - 1];
    QColor ground = mark;
    ground.setAlphaF(task.isCompleted ? 0.05F : 0.12F);
    painter.setPen(isChosen ? QPen(colors.accent, 1.5) : QPen(Qt::NoPen));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    painter.setPen(Qt::NoPen);
    painter.setBrush(task.isCompleted ? colors.line : mark);
    const QRect bar(area.left() + 1, area.top() + 2, 3, area.height() - 4);
    painter.drawRoundedRect(QStyle::visualRect(layoutDirection(), area, bar), 1.5, 1.5);

    const QRect text = area.adjusted(space::small, 0, -space::small, 0);
    const auto mirrored = [&](const QRect& part) {
        return QStyle::visualRect(layoutDirection(), text, part);
    };
    QFont font = Theme::font(TextRole::caption);
    painter.setFont(font);
    const int timeWidth =
        task.time.isEmpty() ? 0 : QFontMetrics(font).horizontalAdvance(task.time) + space::tiny;
    painter.setPen(task.isOverdue ? colors.danger : colors.secondaryText);
    paintName(painter, mirrored({text.left(), text.top(), timeWidth, text.height()}), task.time);
    font.setStrikeOut(task.isCompleted);
    painter.setFont(font);
    painter.setPen(task.isCompleted ? colors.secondaryText : colors.text);
    paintName(painter, mirrored(text.adjusted(timeWidth, 0, 0, 0)), shownTitle(task.title));
}

// Keys

void CalendarGrid::markDay(Instant day) {
    if (day == model_.day()) return;
    model_.show(model_.span(), day);
    emit dayChanged();
    refresh();
}

void CalendarGrid::chooseNeighbour(int steps) {
    const auto& tasks = model_.days()[model_.dayIndex()].tasks;
    if (tasks.empty()) return;
    const auto present =
        std::ranges::find_if(tasks, [&](const CalendarTask& task) { return task.id == task_; });
    const auto last = static_cast<int>(tasks.size()) - 1;
    const int from = present == tasks.end() ? (steps > 0 ? -1 : last + 1)
                                            : static_cast<int>(present - tasks.begin());
    choose(tasks[static_cast<std::size_t>(std::clamp(from + steps, 0, last))].id);
}

void CalendarGrid::keyPressEvent(QKeyEvent* event) {
    const int forward = layoutDirection() == Qt::LeftToRight ? 1 : -1;
    const bool isControl = event->modifiers().testFlag(Qt::ControlModifier);
    const Instant before = model_.day();
    switch (event->key()) {
    case Qt::Key_Left: model_.moveByDays(-forward); break;
    case Qt::Key_Right: model_.moveByDays(forward); break;
    case Qt::Key_Up:
        if (isControl) return chooseNeighbour(-1);
        model_.moveByDays(-daysInWeek);
        break;
    case Qt::Key_Down:
        if (isControl) return chooseNeighbour(1);
        model_.moveByDays(daysInWeek);
        break;
    case Qt::Key_PageUp: model_.moveBySpans(-1); break;
    case Qt::Key_PageDown: model_.moveBySpans(1); break;
    case Qt::Key_Home: model_.showToday(); break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (task_) {
            emit opened(*task_);
        } else {
            emit addingAsked(model_.day());
        }
        return;
    default: QWidget::keyPressEvent(event); return;
    }
    if (model_.day() != before) emit dayChanged();
    refresh();
}

void CalendarGrid::wheelEvent(QWheelEvent* event) {
    const int steps = -event->angleDelta().y() / wheelStep;
    if (steps == 0) return;
    model_.moveBySpans(steps);
    emit dayChanged();
    refresh();
}

// Mouse

// A press only remembers: choosing opens the panel and turns to another month, and both would move
// the days away from under the pointer that begins to drag.
void CalendarGrid::mousePressEvent(QMouseEvent* event) {
    const auto day = dayAt(event->pos());
    if (!day) return;
    pressedAt_ = event->pos();
    pressedDay_ = model_.days()[*day].cell.date;
    const CalendarTask* const task = taskAt(event->pos());
    pressed_ = task == nullptr ? std::nullopt : std::optional(*task);
    isPressed_ = event->button() == Qt::LeftButton;
    if (!isPressed_) choosePressed();  // the menu comes with the press
}

void CalendarGrid::choosePressed() {
    markDay(pressedDay_);
    const bool isThere = pressed_ && isOnMarkedDay(pressed_->id);
    choose(isThere ? std::optional(pressed_->id) : std::nullopt);
}

void CalendarGrid::mouseMoveEvent(QMouseEvent* event) {
    const bool isFar =
        (event->pos() - pressedAt_).manhattanLength() >= QApplication::startDragDistance();
    if (!isPressed_ || !pressed_ || !isFar) return;
    isPressed_ = false;
    drag(*pressed_);
}

void CalendarGrid::mouseReleaseEvent(QMouseEvent* event) {
    if (!std::exchange(isPressed_, false)) return;
    const auto day = dayAt(event->pos());
    const bool isSameDay = day && model_.days()[*day].cell.date == pressedDay_;
    const bool isMore = isSameDay && areaOfMore(*day).contains(event->pos());
    choosePressed();
    if (pressed_ || !isSameDay) return;
    if (isMore) {
        showAll(model_.dayIndex(), event->globalPosition().toPoint());
    } else {
        emit addingAsked(model_.day());
    }
}

void CalendarGrid::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
    if (pressed_ && !areaOf(pressed_->id).isEmpty()) emit opened(Uuid(pressed_->id));
}

void CalendarGrid::showAll(std::size_t day, const QPoint& globalPlace) {
    auto* const menu = new QMenu(this);
    menu->setObjectName("tasksOfDay");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    constexpr std::size_t mostListed = 40;
    const CalendarDay shown = model_.read(model_.days()[day].cell, mostListed);
    for (const CalendarTask& task : shown.tasks) {
        constexpr int widest = 320;
        const QString title = fontMetrics().elidedText(
            shownTitle(task.title).replace('&', "&&"), Qt::ElideRight, widest);
        QAction* const shownTask = menu->addAction(
            task.time.isEmpty() ? title : task.time + "  " + title, this, [this, id = task.id] {
                choose(id);
            });
        QFont font = menu->font();
        font.setStrikeOut(task.isCompleted);
        shownTask->setFont(font);
    }
    if (shown.tasks.size() < shown.taskCount) {
        const auto rest = shown.taskCount - shown.tasks.size();
        menu->addAction(QString("and %L1 more").arg(rest))->setEnabled(false);
    }
    menu->popup(globalPlace);
}

void CalendarGrid::drag(const CalendarTask& task) {
    const QRect area = areaOf(task.id);
    if (area.isEmpty()) return;  // it went since it was pressed
    auto* const drag = new QDrag(this);
    drag->setMimeData(mimeDataOf({task.id}, {task.title}));
    drag->setPixmap(grab(area));
    drag->setHotSpot(pressedAt_ - area.topLeft());
    drag->exec(Qt::MoveAction);
}

void CalendarGrid::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasFormat(tasksMimeType)) event->acceptProposedAction();
}

void CalendarGrid::dragMoveEvent(QDragMoveEvent* event) {
    dropDay_ = dayAt(event->position().toPoint());
    event->setAccepted(dropDay_.has_value());
    update();
}

void CalendarGrid::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
    dropDay_.reset();
    update();
}

void CalendarGrid::dropEvent(QDropEvent* event) {
    const auto day = dayAt(event->position().toPoint());
    dropDay_.reset();
    update();
    if (!day) return;
    event->acceptProposedAction();
    const Instant date = model_.days()[*day].cell.date;
    const auto chosenBefore = task_;
    emit movedToDay(draggedTasks(*event->mimeData()), date);
    markDay(date);
    if (chosenBefore && isOnMarkedDay(*chosenBefore)) choose(chosenBefore);
}

}  // namespace tesserine::app
