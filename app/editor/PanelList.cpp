#include "app/editor/PanelList.h"

#include "app/look/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <utility>

namespace tesserine::app {
namespace {

constexpr int valueRole = Qt::UserRole;
constexpr int secondRole = Qt::UserRole + 1;

/// Draws both lines of an entry.
class EntryDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const bool hasSecond = !index.data(secondRole).toString().isEmpty();
        const int line = QFontMetrics(option.font).height();
        const int second =
            hasSecond ? QFontMetrics(Theme::font(TextRole::caption)).height() + space::hair : 0;
        return {80, line + second + 2 * space::small};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override {
        const Colors& colors = Theme::colors();
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const bool isChosen = option.state & QStyle::State_Selected;
        const bool isUnder = option.state & QStyle::State_MouseOver;
        if (isChosen || isUnder) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(isChosen ? colors.selection : colors.hover);
            painter->drawRoundedRect(
                option.rect.adjusted(space::tiny, 1, -space::tiny, -1), cornerRadius, cornerRadius);
        }
        const QRect words =
            option.rect.adjusted(space::medium, space::small, -space::medium, -space::small);
        const QFontMetrics metrics(option.font);
        painter->setPen(colors.text);
        painter->drawText(
            words,
            Qt::AlignTop | Qt::AlignLeading,
            metrics.elidedText(
                index.data(Qt::DisplayRole).toString(), Qt::ElideRight, words.width()));
        painter->setFont(Theme::font(TextRole::caption));
        painter->setPen(colors.secondaryText);
        painter->drawText(
            words, Qt::AlignBottom | Qt::AlignLeading, index.data(secondRole).toString());
        painter->restore();
    }
};

}  // namespace

PanelList::PanelList(const QString& objectName, const QString& name, QString empty, QWidget* parent)
    : QListWidget(parent), empty_(std::move(empty)) {
    setObjectName(objectName);
    setAccessibleName(name);
    setFrameShape(QFrame::NoFrame);
    viewport()->setBackgroundRole(QPalette::Window);
    setMouseTracking(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(new EntryDelegate(this));
    connect(this, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        emit chosen(item->data(valueRole));
    });
}

QListWidgetItem* PanelList::add(
    const QString& first, const QString& second, const QVariant& value) {
    auto* const item = new QListWidgetItem(first, this);
    item->setData(valueRole, value);
    item->setData(secondRole, second);
    item->setToolTip(first);
    if (!second.isEmpty()) item->setData(Qt::AccessibleDescriptionRole, second);
    return item;
}

void PanelList::paintEvent(QPaintEvent* event) {
    QListWidget::paintEvent(event);
    if (count() > 0) return;
    QPainter painter(viewport());
    painter.setPen(Theme::colors().secondaryText);
    const QRect room =
        viewport()->rect().adjusted(space::medium, space::large, -space::medium, -space::large);
    painter.drawText(room, Qt::AlignTop | Qt::AlignHCenter | Qt::TextWordWrap, empty_);
}

void PanelList::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter || currentItem() == nullptr) return QListWidget::keyPressEvent(event);
    emit chosen(currentItem()->data(valueRole));
}

}  // namespace tesserine::app
