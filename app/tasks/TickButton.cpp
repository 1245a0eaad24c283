#include "app/tasks/TickButton.h"

#include "app/look/Theme.h"
#include "app/tasks/TaskDelegate.h"

#include <QPainter>

namespace tesserine::app {
namespace {

constexpr int side = 18;
constexpr int focusMargin = 3;  // for the ring of the focus

}  // namespace

TickButton::TickButton(QWidget* parent) : QAbstractButton(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
}

void TickButton::setTask(const QString& title, TaskPriority priority, bool isCompleted) {
    priority_ = priority;
    isCompleted_ = isCompleted;
    const QString what = isCompleted ? QString("Reopen “%1”") : QString("Complete “%1”");
    setAccessibleName(what.arg(shownTitle(title)));
    setToolTip(isCompleted ? "Reopen" : "Complete");
    update();
}

QSize TickButton::sizeHint() const { return {side + 2 * focusMargin, side + 2 * focusMargin}; }

void TickButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QRectF circle(0, 0, side, side);
    circle.moveCenter(QRectF(rect()).center());
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(Theme::colors().accent, 1.5));
        painter.drawEllipse(circle.adjusted(-2, -2, 2, 2));
    }
    paintTickCircle(painter, circle, priority_, isCompleted_ ? 1 : 0);
}

}  // namespace tesserine::app
