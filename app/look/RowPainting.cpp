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

Qt::LayoutDirection directionOf(const QString& text) {
    return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

/// Shapes no more of a long text than a line can show.
QString cutToFit(const QPainter& painter, const QString& text, int width) {
    constexpr int narrowest = 4;  // pixels; hardly any text has narrower letters throughout
    const QFontMetrics metrics = painter.fontMetrics();
    const QString start = text.left(width / narrowest);
    const QString cut = metrics.elidedText(start, Qt::ElideRight, width);
    const bool isWhole = cut.size() == start.size() && start.size() < text.size();
    return isWhole ? metrics.elidedText(text, Qt::ElideRight, width) : cut;
}

/// `text` runs as its language does, from where a line of `layout` begins.
void paintLine(
    QPainter& painter, const QRect& line, const QString& text, Qt::LayoutDirection layout) {
    const Qt::LayoutDirection before = painter.layoutDirection();
    painter.setLayoutDirection(directionOf(text));
    const Qt::Alignment side = layout == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    painter.drawText(
        line,
        static_cast<int>(side) | Qt::AlignVCenter | Qt::AlignAbsolute | Qt::TextSingleLine,
        cutToFit(painter, text, line.width()));
    painter.setLayoutDirection(before);
}

QRect cutOff(QRect& line, const QSize& size, bool isLeft) {
    QRect piece(QPoint(), size);
    piece.moveCenter(line.center());
    isLeft ? piece.moveLeft(line.left()) : piece.moveRight(line.right());
    isLeft ? line.setLeft(piece.right() + 1) : line.setRight(piece.left() - 1);
    return piece;
}

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
    paintLine(painter, line, text, directionOf(text));
}

void paintName(QPainter& painter, const QRect& line, const QString& text) {
    paintLine(painter, line, text, painter.layoutDirection());
}

QRect cutStart(const QPainter& painter, QRect& line, const QSize& size) {
    return cutOff(line, size, painter.layoutDirection() != Qt::RightToLeft);
}

QRect cutEnd(const QPainter& painter, QRect& line, const QSize& size) {
    return cutOff(line, size, painter.layoutDirection() == Qt::RightToLeft);
}

void paintSign(QPainter& painter, QRect& line, const QIcon& icon) {
    icon.paint(&painter, cutEnd(painter, line, {signSide, signSide}));
    cutEnd(painter, line, {space::tiny, 0});
}

bool paintChip(QPainter& painter, QRect& line, const QString& text) {
    if (line.width() < narrowestChip) return false;
    const QFontMetrics metrics(painter.font());
    const int widest = std::min(line.width(), widestChip) - 2 * space::small;
    const QString shown = metrics.elidedText(text, Qt::ElideRight, widest);
    const QSize size(metrics.horizontalAdvance(shown) + 2 * space::small - 2, metrics.height() + 2);
    const QRect chip = cutStart(painter, line, size);
    cutStart(painter, line, {space::tiny, 0});

    const QPen pen = painter.pen();
    painter.setPen(QPen(Theme::colors().line, 1));
    painter.setBrush(Theme::colors().raised);
    const qreal radius = chip.height() / 2.0;
    painter.drawRoundedRect(QRectF(chip).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(pen);
    painter.drawText(chip, Qt::AlignCenter | Qt::TextSingleLine, shown);
    return true;
}

}  // namespace tesserine::app
