#pragma once

#include "base/Uuid.h"

#include <QListView>

#include <vector>

namespace tesserine::app {

class AppEnvironment;
class NoteListModel;

/// The lines of a list of notes, several of which may be selected.
class NoteListView final : public QListView {
    Q_OBJECT

public:
    NoteListView(AppEnvironment& environment, NoteListModel& model, QWidget* parent = nullptr);

    std::vector<Uuid> selected() const;
    /// Selects this note alone and shows its line; false when it is not listed.
    bool choose(const Uuid& note);

signals:
    /// Another set of notes is selected.
    void selectionTurned();
    /// Return or a double click on the selected note.
    void opened();

private:
    void selectionChanged(const QItemSelection& now, const QItemSelection& before) override;
    void keyPressEvent(QKeyEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void chooseNeighbour(int row);
    QItemSelection rowsOf(std::vector<Uuid> notes) const;
    void rememberSelection();
    void putSelectionBack();

    NoteListModel& model_;
    std::vector<Uuid> remembered_;  // while the model is read anew
    Uuid rememberedTop_{};
};

}  // namespace tesserine::app
