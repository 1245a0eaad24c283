#pragma once

#include <QPointF>
#include <QRectF>

#include <optional>

class QPainter;

namespace tesserine::app {

class NoteDocument;
class ObjectRenderer;

/// The corner by which a picture is made larger or smaller. In coordinates of the document.
class PictureHandle {
public:
    static constexpr double side = 14;
    static constexpr int smallestWidth = 40;

    PictureHandle(NoteDocument& document, ObjectRenderer& renderer)
        : document_(document), renderer_(renderer) {}

    bool isUnder(const QPointF& point) const { return pictureUnder(point).has_value(); }
    bool isDragged() const { return dragged_.has_value(); }
    /// Begins to drag the corner at `point`; false where there is none.
    bool press(const QPointF& point);
    void move(const QPointF& point);
    /// Gives the picture its new width, as one step to undo.
    void release();
    /// Nothing is dragged any more; the picture stays as it is.
    void drop() { dragged_.reset(); }
    /// Makes the picture at a position as wide, or as wide as possible, as one step to undo.
    void setWidth(int position, double width);
    /// Draws the corner of the picture under the pointer, and the frame while it is dragged.
    void paint(QPainter& painter) const;

private:
    std::optional<int> pictureUnder(const QPointF& point) const;
    double draggedWidth() const;
    double possible(double width) const;

    NoteDocument& document_;
    ObjectRenderer& renderer_;
    std::optional<int> dragged_;  // the position of its object
    QRectF place_;                // where it stood when it was pressed
    QPointF point_;
};

}  // namespace tesserine::app
