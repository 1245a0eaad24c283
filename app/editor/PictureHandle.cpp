#include "app/editor/PictureHandle.h"

#include "app/editor/NoteDocument.h"
#include "app/editor/ObjectRenderer.h"
#include "app/look/Theme.h"

#include <QPainter>
#include <QTextCursor>

#include <algorithm>
#include <cmath>

namespace tesserine::app {

std::optional<int> PictureHandle::pictureUnder(const QPointF& point) const {
    for (const ObjectRenderer::Shown& shown : renderer_.shown()) {
        const QPointF corner = shown.place.bottomRight();
        const QRectF handle(corner.x() - side, corner.y() - side, side + 2, side + 2);
        if (shown.isPicture && handle.contains(point)) return shown.position;
    }
    return {};
}

bool PictureHandle::press(const QPointF& point) {
    dragged_ = pictureUnder(point);
    if (!dragged_) return false;
    place_ = renderer_.placeOf(*dragged_);
    point_ = point;
    return true;
}

void PictureHandle::move(const QPointF& point) { point_ = point; }

double PictureHandle::draggedWidth() const { return possible(point_.x() - place_.left()); }

double PictureHandle::possible(double width) const {
    return std::clamp(width, double{smallestWidth}, std::max(document_.textWidth(), 80.0));
}

void PictureHandle::release() {
    if (!dragged_) return;
    const int position = *dragged_;
    const double width = draggedWidth();
    dragged_.reset();
    setWidth(position, width);
}

void PictureHandle::setWidth(int position, double width) {
    QTextCursor cursor(&document_);
    cursor.setPosition(position);
    cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
    const int shown = static_cast<int>(std::lround(possible(width)));
    document_.changeStyles(
        cursor, [&](InlineStyle& style) { style.object = withPictureWidth(style.object, shown); });
}

void PictureHandle::paint(QPainter& painter) const {
    if (!dragged_) return;
    const double width = draggedWidth();
    const QRectF frame(
        place_.left(), place_.top(), width, width * place_.height() / place_.width());
    painter.setPen(QPen(Theme::colors().accent, 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame);
}

}  // namespace tesserine::app
