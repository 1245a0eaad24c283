#include "app/commands/PickerList.h"

#include "app/look/Theme.h"

#include <QPainter>
#include <QTextLayout>

namespace tesserine::app {
namespace {

constexpr int iconSide = 20;

/// The title in one line with its matching letters in bold, cut where the room ends.
void drawTitle(QPainter& painter, const QRect& area, const PickerRow& row, const QColor& color) {
    const QFont font = Theme::font(TextRole::body);
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    bold.setForeground(Theme::colors().accent);
    QList<QTextLayout::FormatRange> formats;
    for (const int at : row.marks) {
        formats.append({at, 1, bold});
    }

    QTextLayout layout(row.title, font);
    layout.setFormats(formats);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setNumColumns(static_cast<int>(row.title.size()));
    layout.endLayout();

    painter.save();
    painter.setClipRect(area);
    painter.setPen(color);
    layout.draw(&painter, QPointF(area.x(), area.y() + (area.height() - line.height()) / 2));
    painter.restore();
}

}  // namespace

void PickerModel::setRows(std::vector<PickerRow> rows) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

int PickerModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant PickerModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const PickerRow& shown = row(index.row());
    if (role == Qt::DisplayRole) return shown.title;
    if (role == Qt::AccessibleTextRole) {
        QStringList parts{shown.title, shown.aside, shown.detail};
        parts.removeAll(QString());
        return parts.join(", ");
    }
    return {};
}

QSize PickerDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int text = QFontMetrics(Theme::font(TextRole::body)).height();
    return {200, std::max(text, iconSide) + 2 * space::small};
}

void PickerDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const auto& model = static_cast<const PickerModel&>(*index.model());
    const PickerRow& row = model.row(index.row());
    const Colors& colors = Theme::colors();
    const Qt::LayoutDirection direction = option.direction;
    const auto placed = [&](const QRect& rect) {
        return QStyle::visualRect(direction, option.rect, rect);
    };

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (option.state & QStyle::State_Selected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors.selection);
        painter->drawRoundedRect(
            option.rect.adjusted(space::tiny, 0, -space::tiny, 0), cornerRadius, cornerRadius);
    }

    QRect inner = option.rect.adjusted(space::large, 0, -space::large, 0);
    const QRect picture(inner.x(), inner.y() + (inner.height() - iconSide) / 2, iconSide, iconSide);
    row.icon.paint(painter, placed(picture));
    inner.setLeft(picture.right() + 1 + space::medium);

    const QFont captionFont = Theme::font(TextRole::caption);
    const QFontMetrics caption(captionFont);
    painter->setFont(captionFont);
    painter->setPen(colors.secondaryText);
    if (!row.detail.isEmpty()) {
        const int width = caption.horizontalAdvance(row.detail);
        const QRect place(inner.right() - width, inner.y(), width + 1, inner.height());
        painter->drawText(placed(place), Qt::AlignCenter, row.detail);
        inner.setRight(place.left() - space::medium);
    }

    const QFontMetrics body(Theme::font(TextRole::emphasis));  // room for bold letters
    const int titleWidth = std::min(body.horizontalAdvance(row.title) + space::tiny, inner.width());
    QRect title(inner.x(), inner.y(), titleWidth, inner.height());
    inner.setLeft(title.right() + space::small);
    if (!row.aside.isEmpty() && inner.width() > space::vast) {
        const QString aside = caption.elidedText(row.aside, Qt::ElideRight, inner.width());
        painter->drawText(placed(inner), Qt::AlignVCenter | Qt::AlignLeading, aside);
    }
    drawTitle(*painter, placed(title), row, colors.text);
    painter->restore();
}

}  // namespace tesserine::app
