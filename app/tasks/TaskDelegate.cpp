#include "app/tasks/TaskDelegate.h"

#include "app/look/Icon.h"
#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskWords.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int circleSide = 18;
constexpr int iconSide = 14;
constexpr int indent = 30;  // of a subtask
constexpr int subtasksWidth = 52;
constexpr int pieceGap = 10;
constexpr int margin = space::medium;

const TaskListModel& modelOf(const QModelIndex& index) {
    return static_cast<const TaskListModel&>(*index.model());
}

QColor priorityColor(TaskPriority priority) {
    return Theme::colors().priority[static_cast<int>(priority) - 1];
}

int lineHeight(TextRole role) { return QFontMetrics(Theme::font(role)).height(); }

/// A tick drawn from its left end, as far as `progress`.
QPainterPath tick(const QRectF& area, double progress) {
    const auto at = [&](double x, double y) {
        return area.topLeft() + QPointF(x * area.width(), y * area.height());
    };
    QPainterPath whole(at(0.28, 0.53));
    whole.lineTo(at(0.44, 0.68));
    whole.lineTo(at(0.73, 0.35));
    QPainterPath drawn(whole.pointAtPercent(0));
    constexpr int steps = 12;
    for (int step = 1; step <= steps; ++step) {
        drawn.lineTo(whole.pointAtPercent(std::min(1.0, progress) * step / steps));
    }
    return drawn;
}

}  // namespace

void paintLineGround(QPainter& painter, const QStyleOptionViewItem& option) {
    const Colors& colors = Theme::colors();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool isHovered = option.state.testFlag(QStyle::State_MouseOver);
    const bool isCurrent = option.state.testFlag(QStyle::State_HasFocus);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(isCurrent ? QPen(colors.accent, 1) : QPen(Qt::NoPen));
    painter.setBrush(
        isSelected  ? QBrush(colors.selection)
        : isHovered ? QBrush(colors.hover)
                    : QBrush());
    const QRectF ground =
        QRectF(option.rect).adjusted(space::tiny + 0.5, 0.5, -space::tiny - 0.5, -0.5);
    painter.drawRoundedRect(ground, cornerRadius, cornerRadius);
}

void paintTickCircle(
    QPainter& painter, const QRectF& area, TaskPriority priority, double progress) {
    const Colors& colors = Theme::colors();
    const bool isUrgent = priority != TaskPriority::p4;
    const QColor ink = isUrgent ? priorityColor(priority) : colors.secondaryText;
    const QColor filled = isUrgent ? ink : colors.accent;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr double stroke = 1.6;
    const QRectF ring = area.adjusted(stroke / 2, stroke / 2, -stroke / 2, -stroke / 2);
    QColor tint = ink;
    tint.setAlphaF(isUrgent ? 0.12F : 0.0F);
    painter.setPen(QPen(progress > 0 ? filled : ink, stroke));
    painter.setBrush(tint);
    painter.drawEllipse(ring);
    if (progress > 0) {
        const double radius = ring.width() / 2 * std::min(1.0, progress * 1.6);
        painter.setPen(Qt::NoPen);
        painter.setBrush(filled);
        painter.drawEllipse(ring.center(), radius, radius);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.onAccent, 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(tick(area, progress));
    }
    painter.restore();
}

TaskDelegate::TaskDelegate(const AppEnvironment& environment, Progress progress, QObject* parent)
    : QStyledItemDelegate(parent), environment_(environment), progress_(std::move(progress)) {}

std::vector<TaskDelegate::Piece> TaskDelegate::pieces(const TaskRow& row) const {
    const Colors& colors = Theme::colors();
    std::vector<Piece> pieces;
    if (const auto due = row.due()) {
        const TaskWords words(environment_.now(), environment_.calendar());
        const bool isOverdue = !row.isCompleted && words.isOverdue(*due);
        const bool isToday = !row.isCompleted && words.isToday(due->date);
        const QColor color = isOverdue ? colors.danger
                             : isToday ? colors.accent
                                       : colors.secondaryText;
        const bool isSaidAbove = row.isBelowItsDay;
        const QString text = !isSaidAbove   ? words.due(*due)
                             : due->hasTime ? words.time(due->date)
                                            : QString();
        const QString picture = due->hasTime && isSaidAbove ? "clock" : "calendar";
        if (!text.isEmpty()) pieces.push_back({text, color, picture});
    }
    if (row.repeats) pieces.push_back({{}, colors.secondaryText, "repeat"});
    if (row.hasReminder) pieces.push_back({{}, colors.secondaryText, "bell"});
    if (row.hasNote) pieces.push_back({{}, colors.secondaryText, "note"});
    if (!row.project.isEmpty()) pieces.push_back({"#" + row.project, colors.secondaryText});
    for (const QString& label : row.labels) {
        pieces.push_back({"@" + label, colors.secondaryText});
    }
    return pieces;
}

TaskDelegate::Layout TaskDelegate::layout(
    const QRect& line, const TaskRow& row, Qt::LayoutDirection direction) const {
    const QRect inner = line.adjusted(margin + (row.isSubtask ? indent : 0), 0, -margin, 0);
    const int titleHeight = lineHeight(TextRole::body);
    const int firstTop = line.top() + space::small + 1;
    const auto mirrored = [&](const QRect& area) {
        return QStyle::visualRect(direction, line, area);
    };
    QRect title(
        inner.left() + circleSide + space::medium,
        firstTop,
        inner.width() - circleSide - space::medium,
        titleHeight);
    const int pieceTop = title.bottom() + 1 + space::hair;
    const QRect pieces(title.left(), pieceTop, title.width(), lineHeight(TextRole::caption));
    const auto pictureAtEnd = [&title](bool isShown) {
        if (!isShown) return QRect();
        const QPoint corner(title.right() - iconSide, title.center().y() - iconSide / 2);
        title.setRight(corner.x() - space::small);
        return QRect(corner, QSize(iconSide, iconSide));
    };
    const QRect flag = pictureAtEnd(row.priority != TaskPriority::p4);
    const QRect conflict = pictureAtEnd(row.hasConflict);
    QRect subtasks;
    if (row.subtaskCount > 0) {
        subtasks = QRect(title.right() - subtasksWidth, title.top(), subtasksWidth, titleHeight);
        title.setRight(subtasks.left() - space::small);
    }
    const QRect circle(inner.left(), title.center().y() - circleSide / 2, circleSide, circleSide);
    return {
        mirrored(circle),
        mirrored(title),
        mirrored(pieces),
        mirrored(subtasks),
        mirrored(conflict),
        mirrored(flag)};
}

QSize TaskDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    // Asked for every line of the list: what the line shows is not read for it.
    const TaskLine& line = modelOf(index).at(index.row());
    if (!line.isTask()) {
        const int above = index.row() == 0 ? space::small : space::large;
        return {option.rect.width(), above + lineHeight(TextRole::emphasis) + space::small};
    }
    const int below = line.isTall ? lineHeight(TextRole::caption) + space::hair : 0;
    return {option.rect.width(), lineHeight(TextRole::body) + below + 2 * (space::small + 1)};
}

TaskDelegate::Part TaskDelegate::partAt(
    const QPoint& place, const QRect& line, const TaskRow& row) const {
    if (!row.isTask()) return Part::line;
    const auto direction = static_cast<const QWidget*>(parent())->layoutDirection();
    const Layout parts = layout(line, row, direction);
    // Larger than it looks: a finger or a hasty pointer should hit it.
    const int reach = space::small;
    if (parts.circle.adjusted(-reach, -reach, reach, reach).contains(place)) return Part::circle;
    return parts.subtasks.contains(place) ? Part::subtasks : Part::line;
}

void TaskDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const TaskRow row = modelOf(index).line(index);
    painter->save();
    if (!row.isTask()) {
        paintHeading(*painter, option, row);
    } else {
        paintLineGround(*painter, option);
        const Layout parts = layout(option.rect, row, option.direction);
        paintCircle(*painter, parts.circle, row);
        paintTitle(*painter, parts.title, row);
        paintPieces(*painter, parts.pieces, row);
        if (!parts.subtasks.isEmpty()) paintSubtasks(*painter, parts.subtasks, row);
        if (!parts.conflict.isEmpty()) {
            icon("conflict", Ink::warning).paint(painter, parts.conflict);
        }
        if (!parts.flag.isEmpty()) {
            icon("flag-full", priorityColor(row.priority)).paint(painter, parts.flag);
        }
    }
    painter->restore();
}

void TaskDelegate::paintHeading(
    QPainter& painter, const QStyleOptionViewItem& option, const TaskRow& row) const {
    const Colors& colors = Theme::colors();
    painter.setFont(Theme::font(TextRole::emphasis));
    painter.setPen(row.isOverdueGroup ? colors.danger : colors.text);
    QRect line = option.rect.adjusted(margin, 0, -margin, -space::small);
    line.setTop(line.bottom() + 1 - painter.fontMetrics().height());
    paintName(painter, line, row.heading);
}

void TaskDelegate::paintCircle(QPainter& painter, const QRect& area, const TaskRow& row) const {
    const double settled = row.isCompleted ? 1.0 : 0.0;
    paintTickCircle(painter, area, row.priority, progress_(row.id).value_or(settled));
}

void TaskDelegate::paintTitle(QPainter& painter, const QRect& area, const TaskRow& row) const {
    const Colors& colors = Theme::colors();
    QFont font = Theme::font(TextRole::body);
    font.setStrikeOut(row.isCompleted);
    painter.setFont(font);
    const bool isQuiet = row.isCompleted || row.title.simplified().isEmpty();
    painter.setPen(isQuiet ? colors.secondaryText : colors.text);
    paintName(painter, area, shownTitle(row.title));
}

void TaskDelegate::paintPieces(QPainter& painter, const QRect& area, const TaskRow& row) const {
    const QFont font = Theme::font(TextRole::caption);
    const QFontMetrics metrics(font);
    painter.setFont(font);
    const auto mirrored = [&](const QRect& part) {
        return QStyle::visualRect(painter.layoutDirection(), area, part);
    };
    int left = area.left();
    for (const Piece& piece : pieces(row)) {
        const int pictureWidth = piece.icon.isEmpty() ? 0 : iconSide + space::tiny;
        const int room = area.right() - left - pictureWidth;
        if (room < iconSide) return;
        if (!piece.icon.isEmpty()) {
            const QRect picture(left, area.center().y() - iconSide / 2, iconSide, iconSide);
            icon(piece.icon, piece.color).paint(&painter, mirrored(picture));
        }
        left += pictureWidth;
        const int width = std::min(room, metrics.horizontalAdvance(piece.text) + 1);
        painter.setPen(piece.color);
        paintName(painter, mirrored(QRect(left, area.top(), width, area.height())), piece.text);
        left += width + (piece.text.isEmpty() ? space::tiny : pieceGap);
    }
}

void TaskDelegate::paintSubtasks(QPainter& painter, const QRect& area, const TaskRow& row) const {
    const Colors& colors = Theme::colors();
    const QRect arrow(
        area.right() - iconSide, area.center().y() - iconSide / 2, iconSide, iconSide);
    icon(row.isExpanded ? "chevron-up" : "chevron-down", colors.secondaryText)
        .paint(&painter, arrow);
    painter.setFont(Theme::font(TextRole::caption));
    painter.setPen(colors.secondaryText);
    const QString count = QString("%1/%2").arg(row.doneSubtaskCount).arg(row.subtaskCount);
    painter.drawText(
        area.adjusted(0, 0, -iconSide - space::tiny, 0), Qt::AlignRight | Qt::AlignVCenter, count);
}

}  // namespace tesserine::app
