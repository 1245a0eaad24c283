#include "app/lists/SidebarDelegate.h"

#include "app/lists/SidebarModel.h"
#include "app/look/Icon.h"
#include "app/look/RowPainting.h"
#include "app/look/Theme.h"

#include <QLocale>
#include <QPainter>
#include <QTreeView>

namespace tesserine::app {
namespace {

constexpr int iconSide = 18;
constexpr int step = 14;  // of one level of the tree
constexpr int arrowSide = 12;

bool isHeading(const QModelIndex& index) {
    return index.data(SidebarModel::addressRole).toString().isEmpty();
}

/// Levels below a heading; the view itself indents nothing.
int depthOf(const QModelIndex& index) {
    int depth = 0;
    for (QModelIndex parent = index.parent(); parent.isValid(); parent = parent.parent()) {
        ++depth;
    }
    return depth > 0 ? depth - 1 : 0;
}

/// A place outside all groups stands apart from the one above it.
bool isApart(const QModelIndex& index) { return !isHeading(index) && !index.parent().isValid(); }

QRect insideOf(const QStyleOptionViewItem& option, const QModelIndex& index) {
    const int left = space::medium + depthOf(index) * step;
    return option.rect.adjusted(left, 0, -space::large, 0);
}

void paintArrow(QPainter& painter, const QRect& place, bool isOpen) {
    icon(isOpen ? "chevron-down" : "chevron-right", Ink::secondary).paint(&painter, place);
}

bool isExpanded(const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto* tree = qobject_cast<const QTreeView*>(option.widget);
    return tree != nullptr && tree->isExpanded(index);
}

}  // namespace

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    const int text = QFontMetrics(Theme::font(TextRole::body)).height();
    const bool isLower = isHeading(index) && index.row() > 0;
    if (isApart(index)) return {120, text + space::medium + space::large};
    return {120, text + (isLower ? space::large + space::tiny : space::medium)};
}

void SidebarDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const Colors& colors = Theme::colors();
    QRect line = insideOf(option, index);
    if (isHeading(index)) {
        painter->fillRect(option.rect, colors.window);
        painter->setFont(Theme::font(TextRole::caption));
        painter->setPen(colors.secondaryText);
        line.setTop(line.bottom() - QFontMetrics(painter->font()).height() - space::tiny);
        QFont font = painter->font();
        font.setWeight(QFont::DemiBold);
        painter->setFont(font);
        paintText(*painter, line, index.data().toString());
        QRect arrow(0, 0, arrowSide, arrowSide);
        arrow.moveCenter(line.center());
        arrow.moveRight(line.right());
        const bool isHovered = option.state & QStyle::State_MouseOver;
        if (isHovered || !isExpanded(option, index)) {
            paintArrow(*painter, arrow, isExpanded(option, index));
        }
        painter->restore();
        return;
    }
    QStyleOptionViewItem row = option;
    if (isApart(index)) {
        painter->fillRect(option.rect, colors.window);
        row.rect.setTop(row.rect.top() + space::large);
        line.setTop(row.rect.top());
    }
    paintRowGround(*painter, row, colors.window);

    QRect place(line.left(), 0, iconSide, iconSide);
    place.moveCenter(QPoint(place.center().x(), line.center().y()));
    const bool isSelected = option.state & QStyle::State_Selected;
    const auto kind = SidebarModel::placeAt(index);
    (isSelected && kind ? icon(index.data(SidebarModel::iconNameRole).toString(), Ink::accent)
                        : index.data(Qt::DecorationRole).value<QIcon>())
        .paint(painter, place);
    line.setLeft(place.right() + space::small);

    const auto count = index.data(SidebarModel::countRole).toULongLong();
    if (count > 0) {
        painter->setFont(Theme::font(TextRole::caption));
        painter->setPen(colors.secondaryText);
        const QString shown = QLocale(QLocale::English).toString(count);
        const int width = QFontMetrics(painter->font()).horizontalAdvance(shown);
        painter->drawText(line, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, shown);
        line.setRight(line.right() - width - space::small);
    }
    if (index.model()->hasChildren(index)) {
        QRect arrow(0, 0, arrowSide, arrowSide);
        arrow.moveCenter(line.center());
        arrow.moveRight(line.right());
        paintArrow(*painter, arrow, isExpanded(option, index));
        line.setRight(arrow.left() - space::tiny);
    }
    painter->setFont(Theme::font(TextRole::body));
    painter->setPen(colors.text);
    paintText(*painter, line, index.data().toString());
    painter->restore();
}

void SidebarDelegate::updateEditorGeometry(
    QWidget* editor, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QRect line = insideOf(option, index);
    line.setLeft(line.left() + iconSide + space::tiny);
    editor->setGeometry(line);
}

}  // namespace tesserine::app
