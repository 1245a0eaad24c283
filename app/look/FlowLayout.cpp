#include "app/look/FlowLayout.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>
#include <cassert>

namespace tesserine::app {

FlowLayout::FlowLayout(int gap, QWidget* parent) : QLayout(parent) {
    setContentsMargins(0, 0, 0, 0);
    setSpacing(gap);
}

FlowLayout::~FlowLayout() = default;

void FlowLayout::addItem(QLayoutItem* item) { items_.emplace_back(item); }

int FlowLayout::count() const { return static_cast<int>(items_.size()); }

QLayoutItem* FlowLayout::itemAt(int index) const {
    return index >= 0 && index < count() ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int index) {
    if (!itemAt(index)) return nullptr;
    QLayoutItem* const item = items_[static_cast<std::size_t>(index)].release();
    items_.erase(items_.begin() + index);
    invalidate();
    return item;
}

void FlowLayout::move(int from, int to) {
    assert(itemAt(from) && itemAt(to) && "only items that are there can be moved");
    const auto first = items_.begin();
    if (from < to) std::rotate(first + from, first + from + 1, first + to + 1);
    if (to < from) std::rotate(first + to, first + from, first + from + 1);
    invalidate();
}

int FlowLayout::heightForWidth(int width) const {
    return flow(QRect(0, 0, width, 0), Purpose::measure);
}

QSize FlowLayout::minimumSize() const {
    QSize largest;
    for (const auto& item : items_) {
        largest = largest.expandedTo(item->minimumSize());
    }
    const QMargins margins = contentsMargins();
    return largest.grownBy(margins);
}

void FlowLayout::setGeometry(const QRect& area) {
    QLayout::setGeometry(area);
    flow(area, Purpose::place);
}

int FlowLayout::flow(const QRect& area, Purpose purpose) const {
    const QRect inner = area.marginsRemoved(contentsMargins());
    const Qt::LayoutDirection direction =
        parentWidget() ? parentWidget()->layoutDirection() : Qt::LeftToRight;
    int x = inner.x();
    int y = inner.y();
    int lineHeight = 0;
    for (const auto& item : items_) {
        if (item->isEmpty()) continue;
        const QSize size = item->sizeHint().boundedTo(QSize(inner.width(), QWIDGETSIZE_MAX));
        const bool isFull = x > inner.x() && x + size.width() > inner.right() + 1;
        if (isFull) {
            x = inner.x();
            y += lineHeight + spacing();
            lineHeight = 0;
        }
        if (purpose == Purpose::place) {
            item->setGeometry(QStyle::visualRect(direction, inner, QRect(QPoint(x, y), size)));
        }
        x += size.width() + spacing();
        lineHeight = std::max(lineHeight, size.height());
    }
    return y + lineHeight - area.y() + contentsMargins().bottom();
}

}  // namespace tesserine::app
