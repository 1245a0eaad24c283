#include "app/tasks/MonthPicker.h"

#include "app/look/IconButton.h"
#include "app/look/Theme.h"
#include "app/tasks/TaskWords.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr int mostWeeks = 6;
constexpr int headHeight = 32;

int textHeight() { return QFontMetrics(Theme::font(TextRole::body)).height(); }
int cellSide() { return textHeight() + space::medium; }
int weekdayRowHeight() { return textHeight() + space::hair; }

}  // namespace

MonthPicker::MonthPicker(Calendar calendar, Instant now, QWidget* parent)
    : QWidget(parent), calendar_(std::move(calendar)), now_(now), title_(new QLabel(this)) {
    setObjectName("monthPicker");
    setAccessibleName("Day");
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    title_->setFont(Theme::font(TextRole::emphasis));
    auto* const back = new IconButton("chevron-left", "Month before", this);
    auto* const forward = new IconButton("chevron-right", "Month after", this);
    auto* const head = new QHBoxLayout;
    head->addWidget(title_, 1);
    head->addWidget(back);
    head->addWidget(forward);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::small, 0, 0, 0);
    layout->addLayout(head);
    layout->addStretch();
    connect(back, &IconButton::clicked, this, [this] { move(0, -1); });
    connect(forward, &IconButton::clicked, this, [this] { move(0, 1); });
    setDay(now);
}

void MonthPicker::setDay(Instant day) {
    day_ = calendar_.startOfDay(day);
    cells_ = TaskCalendarLayout::monthCells(day_, calendar_, now_);
    const TaskWords words(now_, calendar_);
    title_->setText(words.month(day_));
    setAccessibleDescription(words.day(day_));
    update();
}

QSize MonthPicker::sizeHint() const {
    return {daysInWeek * cellSide(), headHeight + weekdayRowHeight() + mostWeeks * cellSide()};
}

QRect MonthPicker::cellArea(std::size_t cell) const {
    const int column = static_cast<int>(cell) % daysInWeek;
    const int row = static_cast<int>(cell) / daysInWeek;
    const int side = width() / daysInWeek;
    const QRect area(
        column * side, headHeight + weekdayRowHeight() + row * cellSide(), side, cellSide());
    return QStyle::visualRect(layoutDirection(), rect(), area);
}

std::optional<std::size_t> MonthPicker::cellAt(const QPoint& place) const {
    for (std::size_t cell = 0; cell < cells_.size(); ++cell) {
        if (cellArea(cell).contains(place)) return cell;
    }
    return std::nullopt;
}

void MonthPicker::paintEvent(QPaintEvent* /*event*/) {
    const Colors& colors = Theme::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(Theme::font(TextRole::caption));
    for (std::size_t i = 0; i < daysInWeek; ++i) {
        const QRect above = cellArea(i).adjusted(0, -weekdayRowHeight(), 0, -cellSide());
        painter.setPen(colors.secondaryText);
        painter.drawText(
            above, Qt::AlignCenter, shortWeekdayName(calendar_.weekday(cells_[i].date)).left(2));
    }
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        const CalendarDayCell& cell = cells_[i];
        const QRect area = cellArea(i).adjusted(2, 2, -2, -2);
        const bool isChosen = calendar_.isSameDay(cell.date, day_);
        if (isChosen || hovered_ == i) {
            painter.setBrush(isChosen ? colors.accent : colors.hover);
            painter.setPen(Qt::NoPen);
            painter.drawRoundedRect(area, cornerRadius, cornerRadius);
        }
        QColor ink = cell.isInDisplayedMonth ? colors.text : colors.secondaryText;
        if (cell.isToday) ink = colors.accent;
        painter.setPen(isChosen ? colors.onAccent : ink);
        QFont font = Theme::font(cell.isToday ? TextRole::emphasis : TextRole::body);
        painter.setFont(font);
        painter.drawText(area, Qt::AlignCenter, QString::number(calendar_.local(cell.date).day));
    }
    if (!hasFocus()) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors.accent, 1));
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        if (!calendar_.isSameDay(cells_[i].date, day_)) continue;
        painter.drawRoundedRect(QRectF(cellArea(i)).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    }
}

void MonthPicker::move(int days, int months) {
    setDay(calendar_.addMonths(calendar_.addDays(day_, days), months));
}

void MonthPicker::keyPressEvent(QKeyEvent* event) {
    const int forward = layoutDirection() == Qt::LeftToRight ? 1 : -1;
    switch (event->key()) {
    case Qt::Key_Left: return move(-forward, 0);
    case Qt::Key_Right: return move(forward, 0);
    case Qt::Key_Up: return move(-daysInWeek, 0);
    case Qt::Key_Down: return move(daysInWeek, 0);
    case Qt::Key_PageUp: return move(0, -1);
    case Qt::Key_PageDown: return move(0, 1);
    case Qt::Key_Home: return setDay(now_);
    case Qt::Key_Return:
    case Qt::Key_Enter: emit picked(day_); return;
    default: QWidget::keyPressEvent(event);
    }
}

void MonthPicker::mouseMoveEvent(QMouseEvent* event) {
    hovered_ = cellAt(event->pos());
    update();
}

void MonthPicker::leaveEvent(QEvent* /*event*/) {
    hovered_.reset();
    update();
}

void MonthPicker::mousePressEvent(QMouseEvent* event) {
    const auto cell = cellAt(event->pos());
    if (!cell) return;
    setDay(cells_[*cell].date);
    emit picked(day_);
}

}  // namespace tesserine::app
