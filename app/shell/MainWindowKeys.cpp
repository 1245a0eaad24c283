#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>

/// What has the keys in the window, and who takes them.
namespace tesserine::app {

/// None that is known where other parts of the window have them, which are the same everywhere.
KeyHolder MainWindow::keyHolder() const {
    const QWidget* const keys = focusWidget();
    if (!notesShown() || keys == nullptr) return KeyHolder::unknown;
    if (keys == searchField_ && !notes_->showsList()) return KeyHolder::searchField;
    if (notes_->editorHasKeys()) return KeyHolder::note;
    return notes_->isAncestorOf(keys) ? KeyHolder::list : KeyHolder::unknown;
}

/// What had them last in a place has them again when one comes back.
void MainWindow::followKeys() {
    if (isEntering_ || isTurning_) return;
    const KeyHolder keys = keyHolder();
    if (keys != KeyHolder::unknown) history().keepKeys(keys);
}

/// Among notes the list leaves them to who writes; a query goes on where it ended.
void MainWindow::giveKeys(KeyHolder keys) {
    if (!notesShown()) return;
    const bool isNoteOpen = notes_->openedNote().has_value();
    if (keys == KeyHolder::note && isNoteOpen) return notes_->editor().body().setFocus();
    if (notes_->showsList()) return;
    if (keys == KeyHolder::searchField) {
        searchField_->setFocus();
        searchField_->deselect();
    } else if (isNoteOpen) {
        searchResults_->takeKeys();
    }
}

/// After a start, when who wrote in the note, or a query, can go on there. Somebody who chose
/// something else meanwhile keeps the keys there.
void MainWindow::giveKeysBack(KeyHolder keys) {
    const KeyHolder present = keyHolder();
    if (keys == KeyHolder::note && present == KeyHolder::list) return giveKeys(keys);
    const bool isQuery = notesShown() && !notes_->showsList();
    if (isQuery && present != KeyHolder::note) giveKeys(KeyHolder::searchField);
}

/// What the menu key does, for keyboards that have none.
void MainWindow::keyPressEvent(QKeyEvent* event) {
    QWidget* const chosen = focusWidget();
    const bool isForMenu = event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier;
    if (!isForMenu || chosen == nullptr) return QMainWindow::keyPressEvent(event);
    const QPoint place = chosen->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, place, chosen->mapToGlobal(place));
    QApplication::sendEvent(chosen, &menu);
}

/// What had the keys is gone, such as a line at the top.
void MainWindow::focusInEvent(QFocusEvent* event) {
    QMainWindow::focusInEvent(event);
    focusContent();
}

}  // namespace tesserine::app
