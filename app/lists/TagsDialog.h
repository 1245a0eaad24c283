#pragma once

#include "app/lists/NoteActions.h"

#include <QDialog>

class QLineEdit;
class QListWidget;
class QListWidgetItem;

namespace tesserine::app {

class AppEnvironment;

/// The tags of several notes: those that all of them carry are ticked, those of some of them half.
/// Tags are put on and taken off all of them in one save once it is accepted; what was not touched
/// stays what it is on each note.
class TagsDialog final : public QDialog {
    Q_OBJECT

public:
    TagsDialog(AppEnvironment& environment, NoteActions::Notes notes, QWidget* parent);

    void accept() override;

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// Without an id it is a new one.
    void addTag(const QString& name, Qt::CheckState state, const std::optional<Uuid>& id = {});
    QListWidgetItem* itemOf(const QString& name) const;
    void narrow(const QString& typed);
    void tick(QListWidgetItem& item);

    AppEnvironment& environment_;
    const NoteActions::Notes notes_;
    QLineEdit* const field_;
    QListWidget* const list_;
    QListWidgetItem* const newTag_;  // the last one; offers to make what is typed
};

}  // namespace tesserine::app
