#pragma once

#include "app/editor/BackgroundTask.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/EditorPreferences.h"
#include "app/editor/OpenNote.h"
#include "app/editor/Pictures.h"
#include "app/editor/UndoMemory.h"
#include "base/Uuid.h"
#include "core/store/StoreChanges.h"

#include <QWidget>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QLineEdit;
class QMenu;

namespace tesserine::app {

class AppEnvironment;
class Commands;
class ConflictResolution;
class EditorFooter;
class EditorToolBar;
class FindBar;
class LinkCommands;
class LinkCompletion;
class NoteHeader;
class NoteSaver;
class NoticeBar;
class PassageLocking;
class Paster;
class SidePanel;
class SpellChecker;
class SpellingMarks;
class WordMarks;

/// One note to be read and written: title, tool bar, body, and what belongs to it.
///
/// What is typed is saved a second later, and before the note is left. A note that another program
/// changes meanwhile is shown anew, unless it was being typed in: then both versions are kept and
/// the difference is to be looked at.
///
/// One per window: it handles the commands "edit.…", "find.…" and "format.…", "view.outline",
/// "view.backlinks" and "view.zoom…", "note.reminder", "note.attach", "note.versions",
/// "note.lock", "note.print" and "note.pdf".
class NoteEditor final : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NoteEditor)

public:
    /// Both outlive it.
    NoteEditor(AppEnvironment& environment, Commands& commands, QWidget* parent = nullptr);
    ~NoteEditor() override;

    /// Saves the note before and shows another. False when there is no such note, or when the one
    /// before could not be saved; it stays then.
    bool open(const Uuid& id);
    /// Saves the note and shows none; false when it could not be saved.
    bool close();
    std::optional<Uuid> noteID() const { return open_.id(); }

    /// Saves what was typed, as before everything that leaves the note. False when that failed: the
    /// user was told, and nothing is lost.
    bool save();

    /// Where the reader is in a note, or was when it was left; none where it was not open.
    std::optional<BodyPlace> placeIn(const Uuid& id) const;
    /// Where the reader is to be when the note is opened first.
    void setPlaceIn(const Uuid& id, const BodyPlace& place) { places_.try_emplace(id, place); }

    /// Marks words in the open note, such as those of a search or a citation, and shows the first.
    void showWords(const QString& words);
    /// Goes to the field of tags.
    void editTags();

    BodyEdit& body() { return *body_; }

    QLineEdit& title() { return *title_; }
    NoticeBar& notice() { return *notice_; }

signals:
    void titleChanged(const tesserine::Uuid& id, const QString& title);
    void saved(const tesserine::Uuid& id);
    /// Another note that is to be shown.
    void noteChosen(const tesserine::Uuid& id);
    /// An address that was clicked: of a place ("tesserine://…") or of the web.
    void linkActivated(const QString& address);
    /// A copy of an attachment that is to be opened by the program for its type.
    void fileActivated(const QString& path);
    /// The open note was deleted for good.
    void noteGone();

private:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void followPreferences();
    void readDictionary();
    void zoom(int step);
    void build();
    void makeHelpers();
    void layOut();
    void connectParts();
    void handleCommands();
    void showNote(const CDNote& note, BodyView view = {});
    void rememberPlace();
    void showTitle();
    void showSurroundings(const CDNote& note);
    void offerCommands();
    void restore();
    void dropQuestions();
    void showSaved(NoteService::EditOutcome outcome);
    void follow(const std::vector<ObjectChange>& changes);
    void followNote();
    void reload();
    bool saveStep();
    void followConflict(bool isInConflict);
    void printNote();
    void saveAsPDF();
    void fillMenu(QMenu* menu, int position);
    void openObject(int position, CellPlace cell = {});
    void openAttachment(const Uuid& id);
    void markChanged();

    AppEnvironment& environment_;
    Commands& commands_;
    OpenNote open_;
    Pictures pictures_;
    EditorPreferences preferences_;
    std::unique_ptr<SpellChecker> spelling_;
    BackgroundTask<std::unique_ptr<SpellChecker>> reading_;  // of a dictionary
    EditorToolBar* toolBar_ = nullptr;
    NoteHeader* header_ = nullptr;
    QLineEdit* title_ = nullptr;  // of the header
    BodyEdit* body_ = nullptr;
    NoteSaver* saver_ = nullptr;
    NoticeBar* notice_ = nullptr;
    QString failure_;  // of the last attempt to save, as the notice says it
    FindBar* find_ = nullptr;
    EditorFooter* footer_ = nullptr;
    SidePanel* panel_ = nullptr;
    Paster* paster_ = nullptr;
    LinkCommands* links_ = nullptr;
    LinkCompletion* completion_ = nullptr;
    SpellingMarks* spellingMarks_ = nullptr;
    WordMarks* wordMarks_ = nullptr;
    PassageLocking* locking_ = nullptr;
    ConflictResolution* conflict_ = nullptr;
    UndoMemory undo_;
    std::map<Uuid, BodyPlace> places_;  // of the notes that were open; one comes back to them
    bool isInConflict_ = false;         // as the notice says
    bool isShowing_ = false;            // what changes now is not typed
    bool isInStep_ = false;             // what changes the library now is shown as a step
    bool isDark_ = false;               // as the note is shown
};

}  // namespace tesserine::app
