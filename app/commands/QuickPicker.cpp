#include "app/commands/QuickPicker.h"

#include "app/commands/PickerList.h"
#include "app/look/Theme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

constexpr int widest = 560;
constexpr int mostRows = 10;

}  // namespace

QuickPicker::QuickPicker(const QString& hint, QWidget* window)
    : QFrame(window, Qt::Popup),
      field_(new QLineEdit(this)),
      list_(new QListView(this)),
      empty_(new QLabel(this)),
      model_(new PickerModel(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameStyle(QFrame::StyledPanel);
    setAccessibleName(hint);

    field_->setObjectName("pickerField");
    field_->setPlaceholderText(hint);
    field_->setAccessibleName(hint);
    field_->setFrame(false);
    field_->setFont(Theme::font(TextRole::heading));
    field_->setTextMargins(space::medium, space::medium, space::medium, space::medium);
    field_->installEventFilter(this);

    list_->setObjectName("pickerList");
    list_->setAccessibleName(hint);
    list_->setModel(model_);
    list_->setItemDelegate(new PickerDelegate(list_));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setUniformItemSizes(true);
    list_->setMouseTracking(true);

    empty_->setMargin(space::large);
    empty_->setWordWrap(true);
    empty_->setText(tr("Nothing fits."));
    empty_->hide();

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, space::tiny);
    column->setSpacing(0);
    column->addWidget(field_);
    column->addWidget(list_, 1);
    column->addWidget(empty_);

    connect(field_, &QLineEdit::textChanged, this, &QuickPicker::ask);
    connect(list_, &QListView::clicked, this, [this](const QModelIndex& at) { pick(at.row()); });
}

void QuickPicker::open() {
    fit();
    show();
    field_->setFocus();
    ask();
}

void QuickPicker::ask() {
    isAnswered_ = false;
    picksAnswer_ = false;
    emit typed(text());
}

QString QuickPicker::text() const { return field_->text(); }

void QuickPicker::setEmptyText(const QString& text) { empty_->setText(text); }

void QuickPicker::setRows(std::vector<PickerRow> rows) {
    model_->setRows(std::move(rows));
    const bool isEmpty = model_->rowCount() == 0;
    list_->setVisible(!isEmpty);
    empty_->setVisible(isEmpty);
    if (!isEmpty) list_->setCurrentIndex(model_->index(0));
    fit();
    isAnswered_ = true;
    if (std::exchange(picksAnswer_, false)) pick(list_->currentIndex().row());
}

void QuickPicker::fit() {
    const QWidget* const window = parentWidget();
    const int width = std::min(widest, window->width() - 2 * space::huge);
    const int rows = std::min(model_->rowCount(), mostRows);
    list_->setFixedHeight(rows * list_->sizeHintForRow(0) + space::tiny);
    setFixedWidth(width);
    adjustSize();
    QWidget::move(window->mapToGlobal(QPoint((window->width() - width) / 2, space::vast)));
}

bool QuickPicker::eventFilter(QObject* watched, QEvent* event) {
    if (watched != field_ || event->type() != QEvent::KeyPress) {
        return QFrame::eventFilter(watched, event);
    }
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Up: move(-1); return true;
    case Qt::Key_Down: move(1); return true;
    case Qt::Key_PageUp: move(-mostRows); return true;
    case Qt::Key_PageDown: move(mostRows); return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        picksAnswer_ = !isAnswered_;
        if (isAnswered_) pick(list_->currentIndex().row());
        return true;
    case Qt::Key_Escape: close(); return true;
    default: return false;
    }
}

void QuickPicker::move(int steps) {
    const int last = model_->rowCount() - 1;
    if (last < 0) return;
    const int at = list_->currentIndex().row();
    // One step past an end goes round; a page stops there.
    const bool isPastEnd = at + steps < 0 || at + steps > last;
    const int around = steps > 0 ? 0 : last;
    const int to = isPastEnd && std::abs(steps) == 1 ? around : std::clamp(at + steps, 0, last);
    list_->setCurrentIndex(model_->index(to));
}

void QuickPicker::pick(int row) {
    if (row < 0) return;
    close();
    emit picked(row);
}

}  // namespace tesserine::app
