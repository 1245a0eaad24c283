#pragma once

#include "app/state/Place.h"
#include "base/Uuid.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

class QWidget;

namespace tesserine {
class CDNote;
}

namespace tesserine::app {

class AppEnvironment;

/// What is done to the notes that are selected in a list, each in one save. Notes that are gone are
/// passed over. Belongs to the main thread.
class NoteActions {
public:
    using Notes = std::vector<Uuid>;

    /// Failures to save are shown over `parent`.
    NoteActions(AppEnvironment& environment, QWidget* parent)
        : environment_(environment), parent_(parent) {}

    /// A new note that belongs to the place: in its notebook, from the template that is set for it,
    /// with its tag, pinned, or a template. None when it could not be saved.
    std::optional<Uuid> create(const Place& place) const;
    std::optional<Uuid> createFromTemplate(const Uuid& noteTemplate, const Place& place) const;
    std::optional<Uuid> saveAsTemplate(const Uuid& id) const;
    Notes duplicate(const Notes& notes) const;

    void setPinned(const Notes& notes, bool isPinned) const;
    /// Whether all of them are.
    bool arePinned(const Notes& notes) const;
    /// None takes them out of their notebooks.
    void move(const Notes& notes, const std::optional<Uuid>& notebook) const;
    void addTag(const Notes& notes, const Uuid& tag) const;
    /// The tag of this name, made when there is none.
    void addTag(const Notes& notes, const QString& name) const;
    void removeTag(const Notes& notes, const Uuid& tag) const;

    /// Names of tags that all of them are to carry, made where there are none, and not to carry.
    void changeTags(const Notes& notes, const QStringList& added, const QStringList& removed) const;

    void moveToTrash(const Notes& notes) const;
    void restore(const Notes& notes) const;
    void deleteForGood(const Notes& notes) const;
    /// Deletes everything in the trash, after a backup, in the background.
    void emptyTrash(std::function<void()> done) const;

    /// "“Plan”" or "3 notes".
    QString describe(const Notes& notes) const;

private:
    void forEach(const Notes& notes, const std::function<void(CDNote&)>& change) const;
    void takeOver(CDNote& note, const Place& place) const;
    std::optional<Uuid> saved(const CDNote& note) const;

    AppEnvironment& environment_;
    QWidget* parent_;
};

}  // namespace tesserine::app
