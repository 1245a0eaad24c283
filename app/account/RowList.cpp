#include "app/account/RowList.h"

#include "app/account/InfoRow.h"
#include "app/look/PageParts.h"
#include "app/look/Separator.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {

RowList::RowList(const QString& name, QWidget* parent)
    : QWidget(parent), column_(new QVBoxLayout(this)) {
    setAccessibleName(name);
    column_->setContentsMargins(0, 0, 0, 0);
    column_->setSpacing(space::small);
}

void RowList::setRows(const std::vector<Row>& rows) {
    if (std::exchange(isPressed_, false)) sinceAnswer_.start();
    clear();
    for (const Row& row : rows) {
        addRow(row);
    }
}

void RowList::setHint(const QString& sentence) {
    clear();
    column_->addWidget(makeHint(sentence, this));
}

void RowList::showAsking() {
    setHint(tr("Asking the service…"));
    isAsking_ = true;
}

void RowList::stopAsking() {
    if (isAsking_) clear();
}

void RowList::clear() {
    isAsking_ = false;
    while (QLayoutItem* const item = column_->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();  // the press of a button of its own may have led here
        delete item;
    }
}

/// The second click of two is for the row that was there, not for the one that took its place.
void RowList::press(const QString& id) {
    const bool isSecond =
        sinceAnswer_.isValid() && sinceAnswer_.elapsed() < QApplication::doubleClickInterval();
    if (isSecond) return;
    isPressed_ = true;
    emit pressed(id);
}

void RowList::addRow(const Row& row) {
    QPushButton* button = nullptr;
    if (!row.button.isEmpty()) {
        button = new QPushButton(row.button, this);
        button->setAccessibleName(row.button + ": " + row.title);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, id = row.id] { press(id); });
    }
    if (column_->count() > 0) column_->addWidget(new Separator(Qt::Horizontal, this));
    column_->addWidget(new InfoRow(row.title, row.hint, button, this));
}

}  // namespace tesserine::app
