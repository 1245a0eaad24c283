#include "app/look/SettingsForm.h"

#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/look/Separator.h"
#include "base/Files.h"
#include "base/Preferences.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tesserine::app {
SettingsForm::SettingsForm(const QString& title, Preferences& preferences, QWidget* parent)
    : QWidget(parent), preferences_(preferences), column_(new QVBoxLayout) {
    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(space::vast, space::huge, space::vast, space::huge);
    all->addWidget(makeText(title, TextRole::title, this));
    all->addSpacing(space::medium);
    all->addLayout(column_);
    all->addStretch(1);
    column_->setSpacing(space::medium);
    setAccessibleName(title);
}

void SettingsForm::addHeading(const QString& title) {
    column_->addSpacing(space::small);
    column_->addWidget(makeText(title, TextRole::heading, this));
}

void SettingsForm::addWide(QWidget* widget) { column_->addWidget(widget); }

void SettingsForm::addRow(const Words& words, QWidget* control) {
    auto* const row = new QHBoxLayout;
    row->setSpacing(space::huge);
    row->addLayout(makeWords(words, *control), 1);
    row->addWidget(control, 0, Qt::AlignTop);
    column_->addLayout(row);
    column_->addWidget(new Separator(Qt::Horizontal, this));
}

void SettingsForm::addFields(const Words& words, QWidget* control) {
    auto* const row = new QVBoxLayout;
    row->setSpacing(space::small);
    row->addLayout(makeWords(words, *control));
    row->addWidget(control);
    column_->addLayout(row);
}

QLayout* SettingsForm::makeWords(const Words& words, QWidget& control) {
    auto* const text = new QVBoxLayout;
    text->setSpacing(space::hair);
    text->addWidget(makeText(words.title, TextRole::body, this));
    if (!words.hint.isEmpty()) {
        QLabel* const hint = makeHint(words.hint, this);
        hint->setFont(Theme::font(TextRole::caption));
        text->addWidget(hint);
    }
    if (control.accessibleName().isEmpty()) control.setAccessibleName(words.title);
    control.setAccessibleDescription(words.hint);
    return text;
}

void SettingsForm::addSwitch(const std::string& key, const Words& words, bool fallback) {
    auto* const box = new QCheckBox(this);
    box->setObjectName(QString::fromStdString(key));
    box->setChecked(preferences_.boolean(key).value_or(fallback));
    connect(box, &QCheckBox::toggled, this, [this, box, key](bool isOn) {
        if (keep(key, [&] { preferences_.set(key, isOn); })) return;
        const QSignalBlocker quiet(box);
        box->setChecked(!isOn);  // as it is
    });
    addRow(words, box);
}

QComboBox& SettingsForm::addChoice(
    const std::string& key, const Words& words, const std::vector<Option>& options) {
    auto* const box = new QComboBox(this);
    box->setObjectName(QString::fromStdString(key));
    const auto present = preferences_.integer(key);
    int unset = 0;
    int shown = -1;
    for (const Option& option : options) {
        if (!option.number) unset = box->count();
        if (option.number && present == *option.number) shown = box->count();
        box->addItem(option.title);
    }
    box->setCurrentIndex(shown < 0 ? unset : shown);
    const auto set = [this, key, options](std::size_t index) {
        const auto number = options[index].number;
        number ? preferences_.set(key, *number) : preferences_.remove(key);
    };
    followChoice(key, *box, set);
    addRow(words, box);
    return *box;
}

QComboBox& SettingsForm::addChoice(
    const std::string& key, const Words& words, const std::vector<WordOption>& options) {
    auto* const box = new QComboBox(this);
    box->setObjectName(QString::fromStdString(key));
    for (const WordOption& option : options) {
        box->addItem(option.title);
    }
    const auto present = preferences_.string(key);
    const auto shown = std::ranges::find(options, present.value_or(""), &WordOption::word);
    box->setCurrentIndex(shown == options.end() ? 0 : static_cast<int>(shown - options.begin()));
    const auto set = [this, key, options](std::size_t index) {
        preferences_.set(key, options[index].word);
    };
    followChoice(key, *box, set);
    addRow(words, box);
    return *box;
}

/// A choice that cannot be kept is taken back.
void SettingsForm::followChoice(
    const std::string& key, QComboBox& box, std::function<void(std::size_t index)> set) {
    const auto take =
        [this, key, &box, set = std::move(set), kept = box.currentIndex()](int index) mutable {
            if (keep(key, [&] { set(static_cast<std::size_t>(index)); })) {
                kept = index;
            } else {
                box.setCurrentIndex(kept);
            }
        };
    connect(&box, &QComboBox::activated, this, take);
}

QPushButton& SettingsForm::addButton(const Words& words, const QString& button) {
    auto* const made = new QPushButton(button, this);
    made->setAccessibleName(button);
    made->setAutoDefault(false);
    addRow(words, made);
    return *made;
}

bool SettingsForm::keep(const std::string& key, const std::function<void()>& set) {
    try {
        set();
    } catch (const FileError& error) {
        showNotice(this, error.what());
        return false;
    }
    emit changed(QString::fromStdString(key));
    return true;
}

}  // namespace tesserine::app
