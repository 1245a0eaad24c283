#include "app/look/RowPainting.h"

#include <QIcon>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QTextOption>

namespace tesserine::app {
namespace {

constexpr int signSide = 15;
constexpr int narrowestChip = 28;
constexpr int widestChip = 120;

}  // namespace

void paintRowGround(QPainter& painter, const QStyleOptionViewItem& option, const QColor& plain) {
    const Colors& colors = Theme::colors();
    painter.fillRect(option.rect, plain);
    const bool isSelected = option.state & QStyle::State_Selected;
    const bool isHovered = option.state & QStyle::State_MouseOver;
    const QRectF patch = QRectF(option.rect).adjusted(4.5, 1.5, -4.5, -1.5);
    if (isSelected || isHovered) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isSelected ? colors.selection : colors.hover);
        painter.drawRoundedRect(patch, cornerRadius, cornerRadius);
    }
    if ((option.state & QStyle::State_HasFocus)
        && (option.state & QStyle::State_KeyboardFocusChange || !isSelected)) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.accent, 1));
        painter.drawRoundedRect(patch, cornerRadius, cornerRadius);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(colors.text);
}

void paintText(QPainter& painter, const QRect& line, const QString& text) {
    const QFontMetrics metrics(painter.font());
    const Qt::Alignment side = text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(
        line,
        static_cast<int>(side) | Qt::AlignVCenter | Qt::AlignAbsolute | Qt::TextSingleLine,
        metrics.elidedText(text, Qt::ElideRight, line.width()));
}

void paintSign(QPainter& painter, QRect& line, const QIcon& icon) {
    QRect place(0, 0, signSide, signSide);
    place.moveCenter(line.center());
    place.moveRight(line.right());
    icon.paint(&painter, place);
    line.setRight(place.left() - space::tiny);
}

bool paintChip(QPainter& painter, QRect& line, const QString& text) {
    if (line.width() < narrowestChip) return false;
    const QFontMetrics metrics(painter.font());
    const int widest = std::min(line.width(), widestChip) - 2 * space::small;
    const QString shown = metrics.elidedText(text, Qt::ElideRight, widest);
    QRect chip = line;
    chip.setWidth(metrics.horizontalAdvance(shown) + 2 * space::small - 2);
    chip.setHeight(metrics.height() + 2);
    chip.moveCenter(QPoint(chip.center().x(), line.center().y()));

    const QPen pen = painter.pen();
    painter.setPen(QPen(Theme::colors().line, 1));
    painter.setBrush(Theme::colors().raised);
    const qreal radius = chip.height() / 2.0;
    painter.drawRoundedRect(QRectF(chip).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(pen);
    painter.drawText(chip, Qt::AlignCenter | Qt::TextSingleLine, shown);
    line.setLeft(chip.right() + space::tiny);
    return true;
}

}  // namespace tesserine::app
