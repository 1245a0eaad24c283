#pragma once

#include "app/tasks/TaskRow.h"

#include <QStyledItemDelegate>

#include <functional>

namespace tesserine::app {

class AppEnvironment;

/// Paints the lines of a task list: circle, title, and below it due date, project and labels.
class TaskDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    /// How far the tick of a task is drawn, 0 to 1; none when it is not being drawn.
    using Progress = std::function<std::optional<double>(const Uuid& task)>;

    TaskDelegate(const AppEnvironment& environment, Progress progress, QObject* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// What a click at a place of a line means.
    enum class Part { line, circle, subtasks };
    Part partAt(const QPoint& place, const QRect& line, const TaskRow& row) const;

private:
    /// A piece of the line below the title.
    struct Piece {
        QString text{};
        QColor color{};
        QString icon{};
    };
    /// Where the parts of a line stand; mirrored where reading begins at the right.
    struct Layout {
        QRect circle;
        QRect title;
        QRect pieces;
        QRect subtasks;
        QRect conflict;
        QRect flag;
    };

    std::vector<Piece> pieces(const TaskRow& row) const;
    Layout layout(const QRect& line, const TaskRow& row, Qt::LayoutDirection direction) const;

    void paintHeading(
        QPainter& painter, const QStyleOptionViewItem& option, const TaskRow& row) const;
    void paintCircle(QPainter& painter, const QRect& area, const TaskRow& row) const;
    void paintTitle(QPainter& painter, const QRect& area, const TaskRow& row) const;
    void paintPieces(QPainter& painter, const QRect& area, const TaskRow& row) const;
    void paintSubtasks(QPainter& painter, const QRect& area, const TaskRow& row) const;

    const AppEnvironment& environment_;
    Progress progress_;
};

/// Draws what stands behind a line: that it is selected, current, or under the pointer.
void paintLineGround(QPainter& painter, const QStyleOptionViewItem& option);

/// A circle to tick, coloured by the priority; `progress` 0 is open, 1 is done.
void paintTickCircle(QPainter& painter, const QRectF& area, TaskPriority priority, double progress);

}  // namespace tesserine::app
