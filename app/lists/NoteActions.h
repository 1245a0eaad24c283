#pragma once

#include "app/state/Place.h"
#include "base/Uuid.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

class QWidget;

namespace tesserine {
class CDNote;
class CDTag;
}  // namespace tesserine

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
    /// None takes them out of their notebooks. What was in the trash is taken out of that too.
    void move(const Notes& notes, const std::optional<Uuid>& notebook) const;
    void addTag(const Notes& notes, const Uuid& tag) const;
    void removeTag(const Notes& notes, const Uuid& tag) const;

    /// A tag that was chosen: the one of this id, whatever its name is by now; otherwise the one
    /// of this name, made when there is none.
    struct ChosenTag {
        std::optional<Uuid> id{};
        QString name{};
    };
    /// What all of them are to carry, and not to carry.
    void changeTags(
        const Notes& notes,
        const std::vector<ChosenTag>& added,
        const std::vector<Uuid>& removed) const;

    void moveToTrash(const Notes& notes) const;
    /// Those that are in the trash; the others stay as they are.
    void restore(const Notes& notes) const;
    /// Those that are in the trash still.
    void deleteForGood(const Notes& notes) const;
    /// The same after a backup, in the background.
    void emptyTrash(Notes notes, std::function<void()> done) const;

    /// "“Plan”" or "3 notes".
    QString describe(const Notes& notes) const;

private:
    void forEach(const Notes& notes, const std::function<void(CDNote&)>& change) const;
    void takeOver(CDNote& note, const Place& place) const;
    CDTag* tagOf(const ChosenTag& chosen) const;
    std::optional<Uuid> saved(const CDNote& note) const;

    AppEnvironment& environment_;
    QWidget* parent_;
};

}  // namespace tesserine::app
