#pragma once

#include "app/lists/NoteActions.h"
#include "app/lists/NoteListModel.h"

#include <QWidget>

class QLabel;
class QMenu;
class QPushButton;
class QStackedLayout;

namespace tesserine::app {

class AppEnvironment;
class EmptyState;
class IconButton;
class NoteListView;

/// The middle pane: the notes of a place, with what can be done to those that are selected.
class NoteList final : public QWidget {
    Q_OBJECT

public:
    /// The user's order of notes: "updated", "created" or "title".
    static constexpr std::string_view orderKey = "tesserine.notes.order";

    explicit NoteList(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Shows a place that lists notes and selects its first note, or `note` when it is there.
    void showPlace(const Place& place, const std::optional<Uuid>& note = {});
    const Place& place() const { return model_->scope().place(); }
    /// Selects the note; one that is not listed yet is selected as soon as it is.
    void choose(const Uuid& note);
    /// Moves notes to the trash, wherever they are listed, with an offer to undo it. Those that are
    /// there already are deleted for good, after a question.
    void trash(const std::vector<Uuid>& notes);
    /// Puts into a menu what can be done with notes, wherever they are listed.
    void fillMenu(QMenu& menu, const std::vector<Uuid>& notes, bool areInTrash);
    std::vector<Uuid> selected() const;
    bool isTrash() const { return place().kind == Place::Kind::trash; }

    NoteListView& view() { return *view_; }
    NoteListModel& model() { return *model_; }

public slots:
    void createNote();
    /// Of the selected notes. Deleting for good and emptying the trash ask first.
    void moveToTrash();
    void restore();
    void deleteForGood();
    void emptyTrash();
    void setOrder(NoteOrder order);

signals:
    /// One note is selected, or with none or several selected none.
    void noteChosen(const std::optional<tesserine::Uuid>& note);
    void selectionTurned(const std::vector<tesserine::Uuid>& notes);
    /// The user wants to write in the selected note: Return, a double click.
    void noteOpened(const tesserine::Uuid& note);
    /// The selected note is new, and waits for its title.
    void noteMade(const tesserine::Uuid& note);
    void newTabWanted(const tesserine::Uuid& note);
    void moveWanted(const std::vector<tesserine::Uuid>& notes);
    void tagsWanted(const std::vector<tesserine::Uuid>& notes);
    /// For a line with an offer to undo it.
    void movedToTrash(const std::vector<tesserine::Uuid>& notes);

private:
    void buildHeader();
    void chooseFirst();
    void tellSelection();
    void refreshHeader();
    void showEmptyState();
    void showPage(QWidget* page);
    void showMenu(const QPoint& where);
    void fillTrashMenu(QMenu& menu, const std::vector<Uuid>& notes);
    void askToDelete(const std::vector<Uuid>& notes);
    void ask(const QString& question, const QString& verb, std::function<void()> act);
    NoteOrder order() const;

    AppEnvironment& environment_;
    NoteActions actions_;
    NoteListModel* model_;
    NoteListView* view_;
    EmptyState* empty_ = nullptr;
    QStackedLayout* stack_ = nullptr;
    QLabel* title_;
    QLabel* count_;
    IconButton* orderButton_;
    IconButton* newButton_;
    QPushButton* emptyTrashButton_;
    std::optional<Uuid> awaited_;  // to be selected as soon as it is listed
    bool awaitsFirst_ = false;     // some lists have no first note before they are whole
};

}  // namespace tesserine::app
