#include "app/shell/NotesPane.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/editor/NoticeBar.h"
#include "app/lists/NoteActions.h"
#include "app/lists/NoteList.h"
#include "app/lists/NoteListView.h"
#include "app/look/EmptyState.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "app/tasks/UndoBar.h"
#include "core/model/NoteEntities.h"

#include <QLineEdit>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {
namespace {

constexpr int listWidth = 320;
constexpr int narrowestList = 220;
constexpr int narrowestEditor = 320;

const EmptyState::Content noNote{
    "note", "No note chosen", "Choose a note on the left, or write a new one with Ctrl+N."};

const EmptyState::Content noResult{
    "note", "No note chosen", "Choose a result on the left to read it."};

const EmptyState::Content taskChosen{
    "task", "A task is chosen", "Return or a double click shows it among the tasks."};

}  // namespace

NotesPane::NotesPane(AppEnvironment& environment, Commands& commands, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      commands_(commands),
      splitter_(new QSplitter(this)),
      lists_(new QStackedWidget(splitter_)),
      list_(new NoteList(environment, lists_)),
      right_(new QStackedWidget(splitter_)),
      blank_(new QWidget(right_)),
      undo_(new UndoBar(this, *lists_)) {
    lists_->addWidget(list_);
    lists_->setMinimumWidth(narrowestList);
    lists_->setFocusProxy(list_);
    blank_->setAutoFillBackground(true);
    blank_->setBackgroundRole(QPalette::Base);
    right_->addWidget(blank_);
    right_->setMinimumWidth(narrowestEditor);
    splitter_->setHandleWidth(1);
    splitter_->setChildrenCollapsible(false);
    splitter_->setStretchFactor(1, 1);
    splitter_->setSizes({listWidth, 3 * listWidth});
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(splitter_, 1);
    column->addWidget(undo_);

    connect(list_, &NoteList::noteChosen, this, &NotesPane::follow);
    connect(list_, &NoteList::selectionTurned, this, &NotesPane::showSelection);
    connect(list_, &NoteList::noteOpened, this, [this](const Uuid& note) {
        if (openNote(note)) focusEditor();
    });
    connect(list_, &NoteList::noteMade, this, [this](const Uuid& note) {
        if (openNote(note)) editTitle();
    });
    connect(list_, &NoteList::movedToTrash, this, &NotesPane::offerUndo);
    for (const auto change :
         {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved}) {
        connect(&list_->model(), change, this, &NotesPane::showNothingAgain);
    }
    connect(&list_->model(), &QAbstractItemModel::modelReset, this, &NotesPane::showNothingAgain);
    connect(undo_, &UndoBar::undone, this, [this] {
        NoteActions(environment_, this).restore(undoable_);
        if (showsList() && undoable_.size() == 1) list_->choose(undoable_.front());
    });
}

NoteEditor& NotesPane::editor() {
    if (editor_ == nullptr) makeEditor();
    return *editor_;
}

void NotesPane::makeEditor() {
    editor_ = new NoteEditor(environment_, commands_, right_);
    right_->addWidget(editor_);
    connect(editor_, &NoteEditor::noteGone, this, &NotesPane::showNothing);
    emit editorMade(*editor_);
}

void NotesPane::makeNothing() {
    nothing_ = new EmptyState(noNote, right_);
    nothing_->setAutoFillBackground(true);
    nothing_->setBackgroundRole(QPalette::Base);
    right_->addWidget(nothing_);
}

void NotesPane::beginToFollow() {
    isFollowing_ = true;
    const auto note = std::exchange(waiting_, std::nullopt);
    if (openedNote()) return;
    if (note && openNote(*note)) return;
    showNothing();
}

/// Who writes in one note goes on in the other, though the editor is hidden in between.
bool NotesPane::showPlace(const Place& place, const std::optional<Uuid>& note) {
    if (!save()) return false;
    const bool hadKeys = editorHasKeys();
    showList(*list_);
    list_->showPlace(place, note);
    const bool isListed = !note || !list_->selected().empty();
    if (!isListed && !isFollowing_) waiting_ = note;
    if (!isListed && isFollowing_) openNote(*note);
    if (hadKeys) openedNote() ? editor_->body().setFocus() : list_->setFocus();
    return true;
}

bool NotesPane::showBeside(QWidget* list, const QAbstractItemModel& lines) {
    if (lists_->currentWidget() == list) return true;
    if (editor_ != nullptr && !editor_->close()) return false;
    linesBeside_ = &lines;
    if (lists_->indexOf(list) < 0) {
        lists_->addWidget(list);
        connect(&lines, &QAbstractItemModel::modelReset, this, &NotesPane::showNothingAgain);
    }
    showList(*list);
    waiting_.reset();
    showNoResult();
    return true;
}

void NotesPane::showList(QWidget& list) {
    lists_->setCurrentWidget(&list);
    lists_->setFocusProxy(&list);  // also of keys that are handed on
}

bool NotesPane::closeNote() {
    if (editor_ != nullptr && !editor_->close()) return false;
    showNoResult();
    return true;
}

void NotesPane::showTaskChosen() {
    if (closeNote()) nothing_->setContent(taskChosen);
}

void NotesPane::showNoResult() {
    showNothing();
    nothing_->setContent(noResult);
}

bool NotesPane::showsList() const { return lists_->currentWidget() == list_; }

std::vector<Uuid> NotesPane::chosen() const {
    auto selected = showsList() ? list_->selected() : std::vector<Uuid>{};
    if (!selected.empty()) return selected;
    const auto open = openedNote();
    return open ? std::vector{*open} : std::vector<Uuid>{};
}

bool NotesPane::openNote(const Uuid& note) {
    if (editor().noteID() != note && !editor_->open(note)) return false;
    right_->setCurrentWidget(editor_);
    const auto* stored = environment_.context().find<CDNote>(note);
    const bool isInTrash = stored != nullptr && stored->trashedAt;
    if (showsList() && list_->isTrash() && isInTrash) offerRestore(note);
    emit noteOpened(note);
    return true;
}

bool NotesPane::save() { return editor_ == nullptr || editor_->save(); }

/// A new note begins with its title.
void NotesPane::focusEditor() {
    if (editor().title().text().isEmpty() && editor_->body().document()->isEmpty()) {
        editor_->title().setFocus(Qt::ShortcutFocusReason);
    } else {
        editor_->body().setFocus(Qt::ShortcutFocusReason);
    }
}

void NotesPane::editTitle() {
    editor().title().setFocus(Qt::ShortcutFocusReason);
    editor_->title().selectAll();
}

std::optional<Uuid> NotesPane::openedNote() const {
    if (editor_ == nullptr || right_->currentWidget() != editor_) return std::nullopt;
    return editor_->noteID();
}

bool NotesPane::editorHasKeys() const {
    return editor_ != nullptr && editor_->isAncestorOf(window()->focusWidget());
}

std::optional<BodyPlace> NotesPane::placeIn(const Uuid& note) const {
    return editor_ == nullptr ? std::nullopt : editor_->placeIn(note);
}

/// Whether the open note goes from the list, but not from the library, while it is typed in.
bool NotesPane::isTypedOnElsewhere() const {
    const auto open = openedNote();
    if (!open || !editorHasKeys() || !list_->model().isLeaving(*open)) return false;
    const auto* stored = environment_.context().find<CDNote>(*open);
    return stored != nullptr && !stored->trashedAt;
}

/// The list goes on to the next note when another program takes one away. What is being typed was
/// not meant for that, nor for the list, where Return would lead into the next note.
void NotesPane::follow(const std::optional<Uuid>& note) {
    if (!showsList()) return;
    if (isTypedOnElsewhere()) return list_->view().clearSelection();
    const bool isTypedInto = editorHasKeys() && openedNote() != note;
    if (!isFollowing_) {
        waiting_ = note;
    } else if (note) {
        // A note that cannot be left stays open, and chosen.
        if (!openNote(*note) && editor_->noteID()) list_->choose(*editor_->noteID());
    } else if (editor_ == nullptr || editor_->close()) {
        showNothing();
    }
    if (isTypedInto && openedNote() == note) setFocus();
}

void NotesPane::showSelection(const std::vector<Uuid>& notes) {
    if (!showsList() || nothing_ == nullptr) return;
    if (notes.size() < 2) return nothing_->setContent(noNote);
    nothing_->setContent(
        {"notes",
         shownCount(notes.size(), "note", "notes") + " chosen",
         list_->isTrash()
             ? "Restore them, drag them onto a notebook, or delete them for good."
             : "Drag them onto a notebook or a tag, pin them, or move them to the trash."});
}

void NotesPane::offerUndo(const std::vector<Uuid>& notes) {
    undoable_ = notes;
    undo_->offer(
        QString("Moved %1 to the trash").arg(NoteActions(environment_, this).describe(notes)));
}

void NotesPane::offerRestore(const Uuid& note) {
    editor().notice().tell(
        "This note is in the trash.",
        {{"Restore", [this, note] { NoteActions(environment_, this).restore({note}); }},
         {"Delete Permanently", [this] { list_->deleteForGood(); }}});
}

bool NotesPane::isListEmpty() const {
    return (showsList() ? &list_->model() : linesBeside_)->rowCount() == 0;
}

/// Where nothing is listed, the list has said so already.
void NotesPane::showNothing() {
    if (nothing_ == nullptr) makeNothing();
    right_->setCurrentWidget(isListEmpty() ? blank_ : nothing_);
    emit noteOpened({});
}

/// The list has lines now, or has none any more.
void NotesPane::showNothingAgain() {
    const QWidget* const shown = right_->currentWidget();
    const bool isEmptyShown = shown == blank_;
    if (!isFollowing_ || (shown != nothing_ && !isEmptyShown)) return;
    if (isEmptyShown != isListEmpty()) showNothing();
}

}  // namespace tesserine::app
