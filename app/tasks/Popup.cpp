#include "app/tasks/Popup.h"

#include "app/look/Theme.h"

#include <QPainter>
#include <QScreen>

#include <algorithm>

namespace tesserine::app {

Popup::Popup(QWidget* parent) : QFrame(parent, Qt::Popup) { setAttribute(Qt::WA_DeleteOnClose); }

void Popup::openAt(const QPoint& globalPlace, QWidget& first) {
    move(globalPlace);
    fit();
    show();
    fit();  // its content got its final size just now
    first.setFocus();
}

void Popup::fit() {
    adjustSize();
    const QRect room = (parentWidget() ? parentWidget()->screen() : screen())->availableGeometry();
    move(
        std::max(room.left(), std::min(x(), room.right() - width())),
        std::max(room.top(), std::min(y(), room.bottom() - height())));
}

void Popup::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(Theme::colors().line);
    painter.setBrush(Theme::colors().raised);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace tesserine::app
