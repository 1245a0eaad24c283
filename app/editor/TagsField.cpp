#include "app/editor/TagsField.h"

#include "app/editor/OpenNote.h"
#include "app/look/FlowLayout.h"
#include "app/look/Icon.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "core/model/NoteEntities.h"

#include <QCompleter>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

#include <algorithm>
#include <utility>
#include <vector>

namespace tesserine::app {
namespace {

std::vector<CDTag*> tagsByName(const CDNote& note, const text::Collator& collator) {
    std::vector<CDTag*> tags = note.tags.all();
    std::ranges::sort(tags, [&](const CDTag* a, const CDTag* b) {
        return collator.compare(a->name.valueOr(""), b->name.valueOr("")) < 0;
    });
    return tags;
}

}  // namespace

TagsField::TagsField(AppEnvironment& environment, OpenNote& open, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      open_(open),
      flow_(new FlowLayout(space::tiny, this)),
      field_(new QLineEdit(this)) {
    setObjectName("tagsField");
    field_->setObjectName("tagName");
    field_->setAccessibleName("Add tag");
    field_->setPlaceholderText("Add tag");
    field_->setFrame(false);
    field_->setAcceptDrops(false);  // nothing that is dragged is the name of a tag
    field_->setMinimumWidth(60);
    field_->setMaximumWidth(140);
    field_->installEventFilter(this);
    flow_->setContentsMargins(0, 0, 0, 0);
    flow_->addWidget(field_);
    connect(field_, &QLineEdit::returnPressed, this, [this] { add(field_->text()); });
    connect(field_, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (text.endsWith(',')) add(text);
    });
}

void TagsField::edit() {
    QStringList names;
    for (const CDTag* tag :
         environment_.tags().all(environment_.context(), environment_.collator())) {
        names.append(QString::fromStdString(tag->name.valueOr("")));
    }
    auto* const completer = new QCompleter(names, field_);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    delete field_->completer();
    field_->setCompleter(completer);
    field_->setFocus();
}

void TagsField::refresh() {
    while (flow_->count() > 1) {
        QLayoutItem* const item = flow_->takeAt(0);
        item->widget()->deleteLater();
        delete item;
    }
    const CDNote* const note = open_.note();
    if (std::exchange(shown_, open_.id()) != open_.id()) field_->clear();
    field_->setEnabled(note != nullptr);
    if (note == nullptr) return;
    for (const CDTag* tag : tagsByName(*note, environment_.collator())) {
        auto* const chip = new QToolButton(this);
        const QString name = QString::fromStdString(tag->name.valueOr(""));
        const QString shownName = QString(name).replace('&', "&&");
        chip->setText(shownName);
        chip->setIcon(icon("tag", Ink::secondary));
        chip->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        chip->setAutoRaise(true);
        chip->setToolTip("Tag “" + name + "”");
        chip->setAccessibleName(chip->toolTip());
        connect(chip, &QToolButton::clicked, this, [this, chip, shownName, id = *tag->id] {
            showMenu(id, shownName, chip->mapToGlobal(chip->rect().bottomLeft()));
        });
        flow_->addWidget(chip);
        flow_->move(flow_->count() - 1, flow_->count() - 2);
    }
    updateGeometry();
}

void TagsField::showMenu(const Uuid& tag, const QString& name, const QPoint& place) {
    auto* const menu = new QMenu(this);
    menu->setObjectName("tagMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(icon("search"), "Show Notes with “" + name + "”", this, [this, tag] {
        emit tagChosen(tag);
    });
    menu->addAction(icon("close"), "Remove from This Note", this, [this, tag] { remove(tag); });
    menu->popup(place);
}

bool TagsField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn && field_->completer() == nullptr) edit();
    if (event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        const bool comesBack =
            reason == Qt::PopupFocusReason || reason == Qt::ActiveWindowFocusReason;
        if (!comesBack) take();
    }
    return event->type() == QEvent::KeyPress ? takeKey(static_cast<QKeyEvent*>(event)->key())
                                             : QWidget::eventFilter(watched, event);
}

/// Whether the key is not the field's own.
bool TagsField::takeKey(int key) {
    if (key == Qt::Key_Escape) {
        drop();
        return true;
    }
    const bool isTaken = key == Qt::Key_Backspace && field_->text().isEmpty();
    if (isTaken) removeLast();
    return isTaken;
}

/// Escape takes the name back that is being typed, then leaves, so that no more names are typed.
void TagsField::drop() {
    if (field_->text().isEmpty()) return emit left();
    field_->clear();
}

void TagsField::take() {
    if (!field_->text().trimmed().isEmpty()) add(field_->text());
}

/// The row looks like one field, so a press anywhere in it begins a name.
void TagsField::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && open_.note() != nullptr) edit();
}

void TagsField::add(const QString& names) {
    CDNote* const note = open_.note();
    if (note == nullptr) return;
    try {
        for (const QString& name : names.split(',', Qt::SkipEmptyParts)) {
            auto* const tag = environment_.tags().findOrCreate(
                environment_.context(), name.trimmed().toStdString());
            if (tag != nullptr) environment_.notes().addTag(*note, *tag);
        }
    } catch (const UserError& error) {
        showNotice(this, error.what());
    }
    field_->clear();
    environment_.save(this);
    refresh();
}

void TagsField::remove(const Uuid& id) {
    CDNote* const note = open_.note();
    auto* const tag = environment_.context().find<CDTag>(id);
    if (note == nullptr || tag == nullptr) return;
    environment_.notes().removeTag(*note, *tag);
    environment_.save(this);
    refresh();
}

void TagsField::removeLast() {
    const CDNote* const note = open_.note();
    if (note == nullptr) return;
    const auto tags = tagsByName(*note, environment_.collator());
    if (!tags.empty()) remove(*tags.back()->id);
}

}  // namespace tesserine::app
