#pragma once

#include "app/state/Place.h"

#include <QWidget>

#include <optional>
#include <vector>

class QAbstractItemModel;
class QSplitter;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class Commands;
class EmptyState;
class NoteEditor;
class NoteList;
class UndoBar;
struct BodyPlace;

/// A list of notes and, beside it, the note that is chosen in it. The editor is made for the first
/// note that is opened.
class NotesPane final : public QWidget {
    Q_OBJECT

public:
    NotesPane(AppEnvironment& environment, Commands& commands, QWidget* parent = nullptr);

    /// Shows the place; `note` is opened when it is listed there. False when the note that was open
    /// could not be saved; everything stays then.
    bool showPlace(const Place& place, const std::optional<Uuid>& note);
    /// Shows another list, such as the results of a search, in the place of the list of notes, and
    /// no note beside it; `lines` are what it lists. False when the note that was open could not be
    /// saved.
    bool showBeside(QWidget* list, const QAbstractItemModel& lines);
    /// Whether the list of notes is shown, and no other one.
    bool showsList() const;
    /// The notes that commands act on: those selected in the list, or with none selected and with
    /// another list the one that is open.
    std::vector<Uuid> chosen() const;
    /// Opens the note beside whatever list is shown. False when that could not be done.
    bool openNote(const Uuid& note);
    /// Shows no note beside the other list. False when the one that was open could not be saved.
    bool closeNote();
    /// The same where a task is chosen in that list: what is done to notes must not meet another.
    void showTaskChosen();
    /// From now on the note that is chosen in the list is opened beside it. Called once the window
    /// is seen: until then making an editor would only hold it up.
    void beginToFollow();
    /// Saves what was typed; false when that failed.
    bool save();
    void focusEditor();
    bool editorHasKeys() const;
    /// Where the reader is in a note, or was when it was left, as long as that is known.
    std::optional<BodyPlace> placeIn(const Uuid& note) const;
    /// Chooses the title, for another one to be typed.
    void editTitle();

    NoteList& list() { return *list_; }
    NoteEditor& editor();
    QSplitter& splitter() { return *splitter_; }
    std::optional<Uuid> openedNote() const;

signals:
    void editorMade(tesserine::app::NoteEditor& editor);
    void noteOpened(const std::optional<tesserine::Uuid>& note);

private:
    void makeEditor();
    void makeNothing();
    void showNoResult();
    void showList(QWidget& list);
    bool isTypedOnElsewhere() const;
    void follow(const std::optional<Uuid>& note);
    void showSelection(const std::vector<Uuid>& notes);
    void offerUndo(const std::vector<Uuid>& notes);
    void offerRestore(const Uuid& note);
    bool isListEmpty() const;
    void showNothing();
    void showNothingAgain();

    AppEnvironment& environment_;
    Commands& commands_;
    QSplitter* splitter_;
    QStackedWidget* lists_;
    NoteList* list_;
    const QAbstractItemModel* linesBeside_ = nullptr;
    QStackedWidget* right_;
    NoteEditor* editor_ = nullptr;
    QWidget* blank_;  // until it is known what to show, and beside an empty list
    EmptyState* nothing_ = nullptr;
    UndoBar* undo_;
    std::vector<Uuid> undoable_;  // notes that went to the trash last
    bool isFollowing_ = false;
    std::optional<Uuid> waiting_;  // for `beginToFollow`
};

}  // namespace tesserine::app
