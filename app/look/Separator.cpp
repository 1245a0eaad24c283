#include "app/look/Separator.h"

#include "app/look/Theme.h"

#include <QPainter>

namespace tesserine::app {

Separator::Separator(Qt::Orientation orientation, QWidget* parent) : QWidget(parent) {
    if (orientation == Qt::Horizontal) setFixedHeight(1);
    if (orientation == Qt::Vertical) setFixedWidth(1);
}

void Separator::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), Theme::colors().line); }

}  // namespace tesserine::app
