#include "app/look/IconLabel.h"

#include <QPainter>

namespace tesserine::app {

IconLabel::IconLabel(QIcon icon, int side, QWidget* parent)
    : QWidget(parent), icon_(std::move(icon)) {
    setFixedSize(side, side);
}

void IconLabel::setIcon(const QIcon& icon) {
    icon_ = icon;
    update();
}

void IconLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    icon_.paint(&painter, rect());
}

}  // namespace tesserine::app
