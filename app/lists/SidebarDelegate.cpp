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
    const int start = space::medium + depthOf(index) * step;
    const QRect inside = option.rect.adjusted(start, 0, -space::large, 0);
    return QStyle::visualRect(option.direction, option.rect, inside);
}

void paintArrow(QPainter& painter, QRect& line, bool isOpen) {
    const QRect place = cutEnd(painter, line, {arrowSide, arrowSide});
    icon(isOpen ? "chevron-down" : "chevron-right", Ink::secondary).paint(&painter, place);
}

void paintCount(QPainter& painter, QRect& line, qulonglong count) {
    painter.setFont(Theme::font(TextRole::caption));
    painter.setPen(Theme::colors().secondaryText);
    const QString shown = QLocale(QLocale::English).toString(count);
    const int width = painter.fontMetrics().horizontalAdvance(shown);
    painter.drawText(
        cutEnd(painter, line, {width, line.height()}), Qt::AlignCenter | Qt::TextSingleLine, shown);
    cutEnd(painter, line, {space::small, 0});
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
        const bool isHovered = option.state & QStyle::State_MouseOver;
        if (isHovered || !isExpanded(option, index)) {
            paintArrow(*painter, line, isExpanded(option, index));
        }
        paintName(*painter, line, index.data().toString());
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

    const QRect place = cutStart(*painter, line, {iconSide, iconSide});
    cutStart(*painter, line, {space::small, 0});
    const bool isSelected = option.state & QStyle::State_Selected;
    const auto kind = SidebarModel::placeAt(index);
    (isSelected && kind ? icon(index.data(SidebarModel::iconNameRole).toString(), Ink::accent)
                        : index.data(Qt::DecorationRole).value<QIcon>())
        .paint(painter, place);

    const auto count = index.data(SidebarModel::countRole).toULongLong();
    if (count > 0) paintCount(*painter, line, count);
    if (index.model()->hasChildren(index)) paintArrow(*painter, line, isExpanded(option, index));
    painter->setFont(Theme::font(TextRole::body));
    painter->setPen(colors.text);
    paintName(*painter, line, index.data().toString());
    painter->restore();
}

QWidget* SidebarDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QWidget* const editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (editor != nullptr) editor->setAccessibleName("Name");
    return editor;
}

void SidebarDelegate::updateEditorGeometry(
    QWidget* editor, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QRect line = insideOf(option, index);
    const QRect behindIcon = line.adjusted(iconSide + space::tiny, 0, 0, 0);
    editor->setGeometry(QStyle::visualRect(option.direction, line, behindIcon));
}

}  // namespace tesserine::app
