#include "app/assistant/NameList.h"

#include "app/look/FlowLayout.h"
#include "app/look/Icon.h"
#include "app/look/Theme.h"

#include <QComboBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {

NameList::NameList(
    const QString& what, std::vector<std::string> names, const QStringList& all, QWidget* parent)
    : QWidget(parent),
      what_(what),
      all_(all),
      names_(std::move(names)),
      choice_(new QComboBox(this)),
      chips_(new FlowLayout(space::small)) {
    choice_->setObjectName(what + "Choice");
    choice_->setAccessibleName("Add a " + what + " that is never sent");
    // A long name must not widen the page.
    choice_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    choice_->setMinimumContentsLength(24);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::small);
    column->addLayout(chips_);
    column->addWidget(choice_, 0, Qt::AlignLeft);
    connect(choice_, &QComboBox::activated, this, [this](int index) {
        if (index > 0) add(choice_->itemText(index));
    });
    fill();
}

void NameList::fill() {
    while (QLayoutItem* const item = chips_->takeAt(0)) {
        if (item->widget() != nullptr) item->widget()->deleteLater();
        delete item;
    }
    const QSignalBlocker blocker(choice_);
    choice_->clear();
    choice_->addItem("Add " + what_ + "…");
    for (const QString& name : all_) {
        if (std::ranges::find(names_, name.toStdString()) == names_.end()) choice_->addItem(name);
    }
    choice_->setEnabled(choice_->count() > 1);
    for (const std::string& name : names_) {
        const QString shown = QString::fromStdString(name);
        auto* const chip =
            new QPushButton(icon("close", Ink::secondary), QString(shown).replace('&', "&&"), this);
        chip->setAutoDefault(false);
        chip->setLayoutDirection(Qt::RightToLeft);  // the cross behind the name
        chip->setAccessibleName("Send “" + shown + "” again");
        chip->setToolTip(chip->accessibleName());
        connect(chip, &QPushButton::clicked, this, [this, name] { remove(name); });
        chips_->addWidget(chip);
    }
}

void NameList::add(const QString& name) {
    names_.push_back(name.toStdString());
    fill();
    emit changed();
}

void NameList::remove(const std::string& name) {
    std::erase(names_, name);
    fill();
    emit changed();
}

}  // namespace tesserine::app
