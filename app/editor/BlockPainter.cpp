#include "app/editor/BlockPainter.h"

#include "app/editor/BlockLook.h"
#include "app/editor/ListRules.h"
#include "app/editor/NoteDocument.h"
#include "app/look/Theme.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QPainterPath>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <array>

namespace tesserine::app {
namespace {

using Kind = BlockStyle::Kind;

/// How far the ground of code reaches above its first and below its last line.
constexpr double codePadding = 4;
constexpr double barWidth = 3;

}  // namespace

void BlockPainter::paintBehind(QPainter& painter, const QRectF& visible) const {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (QTextBlock block = firstVisible(visible); block.isValid(); block = block.next()) {
        if (groundOf(block).top() > visible.bottom() + codePadding) break;
        switch (document_.kind(block)) {
        case Kind::codeBlock: paintCode(painter, block); break;
        case Kind::quote: paintQuote(painter, block); break;
        case Kind::divider: paintDivider(painter, block); break;
        case Kind::heading:
        case Kind::bullet:
        case Kind::numbered:
        case Kind::checklist:
        case Kind::preserved:
        case Kind::encrypted:
        case Kind::paragraph: break;
        }
    }
    painter.restore();
}

void BlockPainter::paintMarkers(QPainter& painter, const QRectF& visible) const {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (QTextBlock block = firstVisible(visible); block.isValid(); block = block.next()) {
        if (groundOf(block).top() > visible.bottom()) break;
        if (isListItem(document_.paragraph(block))) paintMarker(painter, block);
    }
    painter.restore();
}

QRectF BlockPainter::boxOf(const QTextBlock& item) const {
    const QRectF place = markerPlace(item);
    const double side = std::min(place.height(), QFontMetricsF(document_.defaultFont()).height());
    const double box = side * 0.86;
    return {place.center().x() - box / 2, place.center().y() - box / 2, box, box};
}

std::optional<int> BlockPainter::itemAt(const QPointF& point) const {
    const int position = document_.documentLayout()->hitTest(point, Qt::FuzzyHit);
    const QTextBlock block = document_.findBlock(position);
    const bool isItem = block.isValid() && document_.kind(block) == Kind::checklist;
    if (!isItem || !boxOf(block).adjusted(-4, -4, 4, 4).contains(point)) return {};
    return block.position();
}

QTextBlock BlockPainter::firstVisible(const QRectF& visible) const {
    const QPointF corner(0, std::max(0.0, visible.top() - codePadding));
    const int position = document_.documentLayout()->hitTest(corner, Qt::FuzzyHit);
    const QTextBlock block = document_.findBlock(std::max(position, 0));
    return block.previous().isValid() ? block.previous() : block;
}

void BlockPainter::paintCode(QPainter& painter, const QTextBlock& block) const {
    QRectF ground = groundOf(block);
    const bool isFirst = !isAlike(block, block.previous());
    const bool isLast = !isAlike(block, block.next());
    if (isFirst) ground.setTop(ground.top() - codePadding);
    ground.setBottom(isLast ? ground.bottom() + codePadding : groundOf(block.next()).top());
    // Rounded at its ends only: what would be rounded in between lies outside of the clip.
    painter.save();
    painter.setClipRect(ground, Qt::IntersectClip);
    const QRectF rounded =
        ground.adjusted(0, isFirst ? 0 : -2 * cornerRadius, 0, isLast ? 0 : 2 * cornerRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::colors().code);
    painter.drawRoundedRect(rounded, cornerRadius, cornerRadius);
    painter.restore();
}

void BlockPainter::paintQuote(QPainter& painter, const QTextBlock& block) const {
    QRectF bar = groundOf(block);
    if (isAlike(block, block.next())) bar.setBottom(groundOf(block.next()).top());
    const bool isRightToLeft = block.textDirection() == Qt::RightToLeft;
    bar.setLeft(isRightToLeft ? bar.right() - 8 - barWidth : bar.left() + 8);
    bar.setWidth(barWidth);
    painter.fillRect(bar, Theme::colors().line.darker(Theme::colors().isDark ? 60 : 115));
}

void BlockPainter::paintDivider(QPainter& painter, const QTextBlock& block) const {
    const QRectF ground = groundOf(block);
    const double y = ground.center().y();
    painter.fillRect(QRectF(ground.left(), y, ground.width(), 1), Theme::colors().line);
}

void BlockPainter::paintMarker(QPainter& painter, const QTextBlock& block) const {
    const AttributedText::Paragraph& paragraph = document_.paragraph(block);
    if (kindOf(paragraph) == Kind::checklist) return paintBox(painter, block);
    const QRectF place = markerPlace(block);
    painter.setPen(Theme::colors().secondaryText);
    painter.setFont(document_.defaultFont());
    if (kindOf(paragraph) == Kind::numbered) {
        const bool isRightToLeft = block.textDirection() == Qt::RightToLeft;
        const QRectF room = place.adjusted(isRightToLeft ? 0 : -40, 0, isRightToLeft ? 40 : 0, 0);
        const auto side = isRightToLeft ? Qt::AlignLeft : Qt::AlignRight;
        const QString number = QString::number(editing::numberOf(document_, block)) + '.';
        const int flags = static_cast<int>(side) | Qt::AlignVCenter | Qt::TextDontClip;
        painter.drawText(room, flags, number);
        return;
    }
    const double radius = std::max(2.0, QFontMetricsF(document_.defaultFont()).height() / 8);
    painter.setBrush(
        paragraph.indent % 2 == 0 ? QBrush(Theme::colors().secondaryText) : QBrush(Qt::NoBrush));
    painter.drawEllipse(place.center(), radius, radius);
}

void BlockPainter::paintBox(QPainter& painter, const QTextBlock& block) const {
    const Colors& colors = Theme::colors();
    const QRectF box = boxOf(block);
    const bool isChecked = document_.paragraph(block).isChecked;
    painter.setPen(QPen(isChecked ? colors.accent : colors.secondaryText, 1.5));
    painter.setBrush(isChecked ? QBrush(colors.accent) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(box.adjusted(0.75, 0.75, -0.75, -0.75), 4, 4);
    if (!isChecked) return;
    const auto at = [&](double x, double y) {
        return QPointF(box.left() + box.width() * x, box.top() + box.height() * y);
    };
    painter.setPen(QPen(colors.onAccent, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(std::array{at(0.26, 0.52), at(0.44, 0.69), at(0.75, 0.34)}.data(), 3);
}

QRectF BlockPainter::markerPlace(const QTextBlock& block) const {
    const QTextLayout& layout = *block.layout();
    if (layout.lineCount() == 0) return {};
    const QTextLine line = layout.lineAt(0);
    const QRectF rect = line.rect().translated(layout.position());
    const double width = look::indentWidth;
    // The words stand at the bottom of a line that is higher than they are.
    const double height = line.ascent() + line.descent();
    const double top = rect.top() + std::max(0.0, rect.height() - height);
    const bool isRightToLeft = block.textDirection() == Qt::RightToLeft;
    const double left = isRightToLeft ? rect.right() + 4 : rect.left() - width - 4;
    return {left, top, width, height};
}

QRectF BlockPainter::groundOf(const QTextBlock& block) const {
    QRectF ground = document_.documentLayout()->blockBoundingRect(block);
    ground.setLeft(0);
    ground.setWidth(document_.textWidth());
    return ground;
}

bool BlockPainter::isAlike(const QTextBlock& block, const QTextBlock& neighbour) const {
    if (!neighbour.isValid() || document_.kind(block) != document_.kind(neighbour)) return false;
    const QTextBlock& later = neighbour.position() > block.position() ? neighbour : block;
    return !document_.paragraph(later).beginsBlock;
}

}  // namespace tesserine::app
