#include "app/lists/NoteList.h"

#include "app/lists/NoteListView.h"
#include "app/lists/PlaceWords.h"
#include "app/look/EmptyState.h"
#include "app/look/Icon.h"
#include "app/look/IconButton.h"
#include "app/look/Notice.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "base/UserError.h"

#include <QActionGroup>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine::app {
namespace {

struct OrderName {
    NoteOrder order;
    const char* word;  ///< in the preferences
    const char* title;
};
constexpr std::array orderNames = {
    OrderName{NoteOrder::updated, "updated", "Last Changed"},
    OrderName{NoteOrder::created, "created", "Created"},
    OrderName{NoteOrder::title, "title", "Title"},
};

}  // namespace

NoteList::NoteList(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      actions_(environment, this),
      model_(new NoteListModel(environment, this)),
      view_(new NoteListView(environment, *model_, this)),
      title_(new QLabel(this)),
      count_(new QLabel(this)),
      orderButton_(new IconButton("sort", "Order of notes", this)),
      newButton_(new IconButton("note-add", "New note", this)),
      emptyTrashButton_(new QPushButton("Empty Trash", this)) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setFocusProxy(view_);
    buildHeader();
    connect(view_, &NoteListView::selectionTurned, this, &NoteList::tellSelection);
    connect(view_, &NoteListView::opened, this, [this] {
        const auto notes = selected();
        if (notes.size() == 1) emit noteOpened(notes.front());
    });
    connect(view_, &QWidget::customContextMenuRequested, this, &NoteList::showMenu);
    for (const auto change :
         {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(model_, change, this, &NoteList::refreshHeader);
    }
    connect(model_, &QAbstractItemModel::modelReset, this, &NoteList::refreshHeader);
    connect(model_, &NoteListModel::completed, this, &NoteList::refreshHeader);
    connect(&environment, &AppEnvironment::libraryChanged, this, &NoteList::refreshHeader);
}

void NoteList::buildHeader() {
    title_->setFont(Theme::font(TextRole::heading));
    title_->setTextFormat(Qt::PlainText);
    title_->setMinimumWidth(0);
    title_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    count_->setFont(Theme::font(TextRole::caption));
    count_->setForegroundRole(QPalette::PlaceholderText);
    emptyTrashButton_->setObjectName("emptyTrash");
    newButton_->setObjectName("newNote");
    orderButton_->setObjectName("noteOrder");
    connect(newButton_, &QToolButton::clicked, this, &NoteList::createNote);
    connect(emptyTrashButton_, &QPushButton::clicked, this, &NoteList::emptyTrash);

    auto* menu = new QMenu(orderButton_);
    auto* group = new QActionGroup(menu);
    for (const OrderName& name : orderNames) {
        QAction* action = menu->addAction(name.title);
        action->setCheckable(true);
        action->setChecked(name.order == order());
        group->addAction(action);
        connect(
            action, &QAction::triggered, this, [this, chosen = name.order] { setOrder(chosen); });
    }
    orderButton_->setMenu(menu);
    orderButton_->setPopupMode(QToolButton::InstantPopup);

    auto* names = new QVBoxLayout;
    names->setSpacing(0);
    names->addWidget(title_);
    names->addWidget(count_);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(space::large, space::medium, space::small, space::small);
    header->setSpacing(space::tiny);
    header->addLayout(names, 1);
    header->addWidget(emptyTrashButton_);
    header->addWidget(orderButton_);
    header->addWidget(newButton_);

    stack_ = new QStackedLayout;
    stack_->addWidget(view_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(header);
    column->addLayout(stack_, 1);
}

void NoteList::showPlace(const Place& place, const std::optional<Uuid>& note) {
    awaited_ = note;
    awaitsFirst_ = false;
    view_->clearSelection();
    model_->show(NoteScope(place, order()));
    view_->scrollToTop();
    if (note) {
        choose(*note);
    } else {
        chooseFirst();
        awaitsFirst_ = !model_->isComplete() && model_->rowCount() == 0;
    }
    tellSelection();
}

void NoteList::chooseFirst() {
    if (model_->rowCount() > 0) view_->choose(model_->noteAt(0));
}

void NoteList::choose(const Uuid& note) {
    awaited_ = note;
    if (view_->choose(note)) awaited_.reset();
}

std::vector<Uuid> NoteList::selected() const { return view_->selected(); }

void NoteList::createNote() {
    const auto note = actions_.create(place());
    if (!note) return;
    choose(*note);
    emit noteMade(*note);
}

void NoteList::moveToTrash() { isTrash() ? deleteForGood() : trash(selected()); }

void NoteList::trash(const std::vector<Uuid>& notes) {
    if (notes.empty()) return;
    const auto isThere = [this](const Uuid& id) {
        const auto* note = environment_.context().find<CDNote>(id);
        return note != nullptr && note->trashedAt;
    };
    if (std::ranges::all_of(notes, isThere)) return askToDelete(notes);
    actions_.moveToTrash(notes);
    emit movedToTrash(notes);
}

void NoteList::restore() { actions_.restore(selected()); }

void NoteList::deleteForGood() { askToDelete(selected()); }

void NoteList::askToDelete(const std::vector<Uuid>& notes) {
    if (notes.empty()) return;
    ask(QString("Delete %1 for good? Earlier versions and attached files go too. This cannot be "
                "undone.")
            .arg(actions_.describe(notes)),
        "Delete Permanently",
        [this, notes] { actions_.deleteForGood(notes); });
}

void NoteList::emptyTrash() {
    NoteActions::Notes notes;  // those the question is about; others may come in before the answer
    for (int row = 0; row < model_->rowCount(); ++row) {
        notes.push_back(model_->noteAt(row));
    }
    if (notes.empty()) return;
    ask(QString("Delete %1 in the trash for good? This cannot be undone.")
            .arg(shownCount(notes.size(), "note", "notes")),
        "Empty Trash",
        [this, notes] { actions_.emptyTrash(notes, {}); });
}

/// Cancel is what Return and Escape choose.
void NoteList::ask(const QString& question, const QString& verb, std::function<void()> act) {
    auto* box = new QMessageBox(QMessageBox::Question, verb, question, QMessageBox::Cancel, this);
    box->setObjectName("question");
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    QPushButton* button = box->addButton(verb, QMessageBox::DestructiveRole);
    connect(button, &QPushButton::clicked, this, std::move(act));
    box->open();
}

NoteOrder NoteList::order() const {
    const auto word = environment_.preferences().string(orderKey).value_or("");
    const auto* const found =
        std::ranges::find(orderNames, word, [](const OrderName& name) { return name.word; });
    return found == orderNames.end() ? NoteOrder::updated : found->order;
}

void NoteList::setOrder(NoteOrder order) {
    const auto* const name = std::ranges::find(orderNames, order, &OrderName::order);
    try {
        environment_.preferences().set(orderKey, name->word);
    } catch (const UserError& error) {
        return showNotice(this, error.what());
    }
    const auto notes = selected();
    showPlace(place(), notes.size() == 1 ? std::optional(notes.front()) : std::nullopt);
}

void NoteList::tellSelection() {
    const auto notes = selected();
    emit noteChosen(notes.size() == 1 ? std::optional(notes.front()) : std::nullopt);
    emit selectionTurned(notes);
}

void NoteList::refreshHeader() {
    if (awaited_ && view_->choose(*awaited_)) awaited_.reset();
    if (model_->isComplete()) {
        awaited_.reset();
        if (std::exchange(awaitsFirst_, false)) chooseFirst();
    }
    title_->setText(titleOf(place(), environment_.context()));
    const auto count = static_cast<std::size_t>(model_->rowCount());
    count_->setText(model_->isComplete() ? shownCount(count, "note", "notes") : QString(" "));
    const bool isEmpty = count == 0 && model_->isComplete();
    isEmpty ? showEmptyState() : showPage(view_);
    emptyTrashButton_->setVisible(isTrash() && !isEmpty);
    newButton_->setVisible(!isTrash());
    const auto kind = place().kind;
    orderButton_->setVisible(
        kind != Place::Kind::trash && kind != Place::Kind::pinned
        && kind != Place::Kind::reminders);
}

/// Made when there is a first list without notes: a window is shown sooner without it.
void NoteList::showEmptyState() {
    const auto content = emptyContentOf(place().kind);
    if (empty_ == nullptr) {
        empty_ = new EmptyState(content, this);
        stack_->addWidget(empty_);
        connect(empty_, &EmptyState::acted, this, &NoteList::createNote);
    }
    empty_->setContent(content);
    showPage(empty_);
}

/// The keys stay in the list, whichever of the two it shows.
void NoteList::showPage(QWidget* page) {
    QWidget* const before = stack_->currentWidget();
    if (page == before) return;
    QWidget* const focused = window()->focusWidget();
    const bool hadKeys = focused == before || before->isAncestorOf(focused);
    stack_->setCurrentWidget(page);
    setFocusProxy(page);
    if (hadKeys) page->setFocus();
}

void NoteList::showMenu(const QPoint& where) {
    if (selected().empty()) return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName("noteMenu");
    fillMenu(*menu, selected(), isTrash());
    menu->popup(view_->viewport()->mapToGlobal(where));
}

/// Of the notes it was opened for: while it is open, others may change what is selected.
void NoteList::fillMenu(QMenu& menu, const std::vector<Uuid>& notes, bool areInTrash) {
    if (areInTrash) return fillTrashMenu(menu, notes);
    const Uuid first = notes.front();
    if (notes.size() == 1) {
        menu.addAction("Open in New Tab", this, [this, first] { emit newTabWanted(first); });
        menu.addSeparator();
    }
    const bool arePinned = actions_.arePinned(notes);
    menu.addAction(icon("pin"), arePinned ? "Unpin" : "Pin", this, [this, notes, arePinned] {
        actions_.setPinned(notes, !arePinned);
    });
    menu.addAction(
        icon("notebook"), "Move to Notebook…", this, [this, notes] { emit moveWanted(notes); });
    menu.addAction(icon("tag"), notes.size() == 1 ? "Add Tag…" : "Tags…", this, [this, notes] {
        emit tagsWanted(notes);
    });
    menu.addSeparator();
    menu.addAction(icon("duplicate"), "Duplicate", this, [this, notes] {
        const auto copies = actions_.duplicate(notes);
        if (copies.size() == 1 && isVisible()) choose(copies.front());
    });
    if (notes.size() == 1) {
        menu.addAction(icon("template"), "Save as Template", this, [this, first] {
            actions_.saveAsTemplate(first);
        });
        menu.addAction(icon("link"), "Copy Link to Note", this, [first] {
            QGuiApplication::clipboard()->setText(
                QString::fromStdString(NoteService::noteURL(first)));
        });
    }
    menu.addSeparator();
    menu.addAction(icon("trash"), "Move to Trash", this, [this, notes] { trash(notes); });
}

void NoteList::fillTrashMenu(QMenu& menu, const std::vector<Uuid>& notes) {
    menu.addAction(icon("restore"), "Restore", this, [this, notes] { actions_.restore(notes); });
    menu.addSeparator();
    menu.addAction(icon("trash", Ink::danger), "Delete Permanently", this, [this, notes] {
        askToDelete(notes);
    });
}

}  // namespace tesserine::app
