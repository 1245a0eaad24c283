#include "app/look/DragPicture.h"

#include "app/look/Theme.h"

#include <QFontMetrics>
#include <QPainter>
#include <QWidget>

namespace tesserine::app {
namespace {

constexpr int widestText = 260;

}  // namespace

QPixmap dragPicture(const QString& text, const QWidget& source) {
    const QFontMetrics metrics(source.font());
    const QString shown = metrics.elidedText(text, Qt::ElideRight, widestText);
    const QSize size(
        metrics.horizontalAdvance(shown) + 2 * space::medium, metrics.height() + space::medium);
    QPixmap picture(size * source.devicePixelRatioF());
    picture.setDevicePixelRatio(source.devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(source.font());
    painter.setPen(Theme::colors().accent);
    painter.setBrush(Theme::colors().raised);
    painter.drawRoundedRect(
        QRectF({0, 0}, size).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.setPen(Theme::colors().text);
    painter.drawText(QRect({0, 0}, size), Qt::AlignCenter, shown);
    return picture;
}

}  // namespace tesserine::app
