#include "app/lists/TagsDialog.h"

#include "app/look/Icon.h"
#include "app/look/PageParts.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <map>
#include <utility>

namespace tesserine::app {
namespace {

/// What a tag was when the dialog came up; `Unchecked` also for one that did not exist.
constexpr int stateBefore = Qt::UserRole;
/// Its id; empty for one that is to be made.
constexpr int idRole = Qt::UserRole + 1;

Qt::CheckState before(const QListWidgetItem& item) {
    return static_cast<Qt::CheckState>(item.data(stateBefore).toInt());
}

}  // namespace

TagsDialog::TagsDialog(AppEnvironment& environment, NoteActions::Notes notes, QWidget* parent)
    : QDialog(parent),
      environment_(environment),
      notes_(std::move(notes)),
      field_(new QLineEdit(this)),
      list_(new QListWidget(this)),
      newTag_(new QListWidgetItem(icon("plus", Ink::secondary), {}, list_)) {
    setObjectName("tagsDialog");
    setWindowTitle("Tags of " + NoteActions(environment, parent).describe(notes_));
    field_->setObjectName("tagName");
    field_->setAccessibleName("Find or add tag");
    field_->setPlaceholderText("Find or add tag");
    field_->setClearButtonEnabled(true);
    field_->installEventFilter(this);
    list_->setObjectName("tagList");
    list_->setAccessibleName("Tags");

    std::map<const CDTag*, std::size_t> carriers;
    std::size_t there = 0;
    for (const Uuid& id : notes_) {
        const auto* note = environment.context().find<CDNote>(id);
        if (note == nullptr) continue;
        ++there;
        for (const CDTag* tag : note->tags.all()) {
            ++carriers[tag];
        }
    }
    for (const CDTag* tag : environment.tags().all(environment.context(), environment.collator())) {
        const std::size_t count = carriers[tag];
        addTag(
            QString::fromStdString(tag->name.valueOr("")),
            count == 0       ? Qt::Unchecked
            : count == there ? Qt::Checked
                             : Qt::PartiallyChecked,
            tag->id);
    }

    narrow({});

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto* const save = makeMainButton("Save Tags", this);
    save->setAutoDefault(false);  // Return takes what is typed
    buttons->addButton(save, QDialogButtonBox::AcceptRole);
    auto* const column = new QVBoxLayout(this);
    column->setSpacing(space::medium);
    column->addWidget(field_);
    column->addWidget(list_, 1);
    column->addWidget(makeHint("A half tick: some of the notes carry the tag, and keep it.", this));
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(field_, &QLineEdit::textChanged, this, &TagsDialog::narrow);
    connect(list_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        if (item == newTag_) tick(*item);
    });
    resize(380, 460);
}

void TagsDialog::addTag(const QString& name, Qt::CheckState state, const std::optional<Uuid>& id) {
    auto* const item = new QListWidgetItem(icon("tag", Ink::secondary), name);
    list_->insertItem(list_->row(newTag_), item);
    item->setData(stateBefore, state);
    if (id) item->setData(idRole, QString::fromStdString(id->text()));
    item->setCheckState(state);
    // What some of them carry can be left at that after a second thought.
    if (state == Qt::PartiallyChecked) item->setFlags(item->flags() | Qt::ItemIsUserTristate);
}

QListWidgetItem* TagsDialog::itemOf(const QString& name) const {
    const auto found = list_->findItems(name, Qt::MatchFixedString);
    return found.isEmpty() ? nullptr : found.front();
}

void TagsDialog::narrow(const QString& typed) {
    const QString sought = typed.trimmed();
    newTag_->setText("New tag “" + sought + "”");
    newTag_->setHidden(sought.isEmpty() || itemOf(sought) != nullptr);
    QListWidgetItem* first = newTag_;
    for (int row = list_->row(newTag_) - 1; row >= 0; --row) {
        QListWidgetItem& item = *list_->item(row);
        item.setHidden(!item.text().contains(sought, Qt::CaseInsensitive));
        if (!item.isHidden()) first = &item;
    }
    QListWidgetItem* const same = itemOf(sought);
    list_->setCurrentItem(same != nullptr ? same : first);
}

/// Return in the field ticks the tag that is marked below it; with nothing typed the dialog is
/// done. Down goes to the list.
bool TagsDialog::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QDialog::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Down) {
        list_->setFocus();
        return true;
    }
    if (key != Qt::Key_Return && key != Qt::Key_Enter) return QDialog::eventFilter(watched, event);
    if (field_->text().trimmed().isEmpty()) {
        accept();
    } else {
        tick(*list_->currentItem());
    }
    return true;
}

void TagsDialog::tick(QListWidgetItem& item) {
    const QString name = &item == newTag_ ? field_->text().trimmed() : item.text();
    if (&item == newTag_) addTag(name, Qt::Unchecked);
    QListWidgetItem* const ticked = itemOf(name);
    ticked->setCheckState(Qt::Checked);
    field_->clear();
    list_->setCurrentItem(ticked);
}

void TagsDialog::accept() {
    std::vector<NoteActions::ChosenTag> added;
    std::vector<Uuid> removed;
    for (int row = 0; row < list_->row(newTag_); ++row) {
        const QListWidgetItem& item = *list_->item(row);
        if (item.checkState() == before(item)) continue;
        const auto id = Uuid::parse(item.data(idRole).toString().toStdString());
        if (item.checkState() == Qt::Checked) added.push_back({id, item.text()});
        if (item.checkState() == Qt::Unchecked && id) removed.push_back(*id);
    }
    NoteActions(environment_, parentWidget()).changeTags(notes_, added, removed);
    QDialog::accept();
}

}  // namespace tesserine::app
