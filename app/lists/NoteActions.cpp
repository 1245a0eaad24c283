#include "app/lists/NoteActions.h"

#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "core/services/LibraryCare.h"

#include <QWidget>

#include <algorithm>

namespace tesserine::app {

using Kind = Place::Kind;

std::optional<Uuid> NoteActions::create(const Place& place) const {
    StoreContext& context = environment_.context();
    CDNotebook* notebook =
        place.kind == Kind::notebook ? context.find<CDNotebook>(place.id) : nullptr;
    if (notebook != nullptr) {
        const auto* start = environment_.notebooks().noteTemplate(context, *notebook);
        if (start != nullptr) return createFromTemplate(*start->id, place);
    }
    CDNote& note = environment_.notes().createNote(context, {.notebook = notebook});
    takeOver(note, place);
    return saved(note);
}

/// What a new note in the place is, besides standing in its notebook.
void NoteActions::takeOver(CDNote& note, const Place& place) const {
    const NoteService& notes = environment_.notes();
    if (place.kind == Kind::pinned) notes.pin(note);
    if (place.kind == Kind::templates) note.isTemplate = true;
    if (place.kind != Kind::tag) return;
    if (auto* tag = environment_.context().find<CDTag>(place.id)) notes.addTag(note, *tag);
}

std::optional<Uuid> NoteActions::createFromTemplate(
    const Uuid& noteTemplate, const Place& place) const {
    StoreContext& context = environment_.context();
    auto* start = context.find<CDNote>(noteTemplate);
    if (start == nullptr) {
        showNotice(parent_, "This template was deleted meanwhile.");
        return std::nullopt;
    }
    CDNotebook* notebook =
        place.kind == Kind::notebook ? context.find<CDNotebook>(place.id) : nullptr;
    CDNote& note = environment_.notes().createFromTemplate(context, *start, notebook);
    environment_.attachments().cloneReferenced(context, note);
    if (place.kind != Kind::templates) takeOver(note, place);
    return saved(note);
}

std::optional<Uuid> NoteActions::saveAsTemplate(const Uuid& id) const {
    StoreContext& context = environment_.context();
    auto* note = context.find<CDNote>(id);
    if (note == nullptr) return std::nullopt;
    CDNote& made = environment_.notes().saveAsTemplate(context, *note);
    environment_.attachments().cloneReferenced(context, made);
    return saved(made);
}

NoteActions::Notes NoteActions::duplicate(const Notes& notes) const {
    StoreContext& context = environment_.context();
    Notes copies;
    for (const Uuid& id : notes) {
        auto* note = context.find<CDNote>(id);
        if (note == nullptr) continue;
        CDNote& copy = environment_.notes().duplicateNote(context, *note);
        environment_.attachments().cloneReferenced(context, copy);
        copies.push_back(*copy.id);
    }
    environment_.save(parent_);
    return copies;
}

void NoteActions::setPinned(const Notes& notes, bool isPinned) const {
    forEach(notes, [&](CDNote& note) {
        isPinned ? environment_.notes().pin(note) : environment_.notes().unpin(note);
    });
}

bool NoteActions::arePinned(const Notes& notes) const {
    return std::ranges::all_of(notes, [this](const Uuid& id) {
        const auto* note = environment_.context().find<CDNote>(id);
        return note == nullptr || bool(note->isPinned);
    });
}

void NoteActions::move(const Notes& notes, const std::optional<Uuid>& notebook) const {
    CDNotebook* target = nullptr;
    if (notebook) {
        target = environment_.context().find<CDNotebook>(*notebook);
        if (target == nullptr) return;
    }
    forEach(notes, [&](CDNote& note) {
        if (note.trashedAt) environment_.notes().restoreFromTrash(note);
        environment_.notes().moveToNotebook(note, target);
    });
}

void NoteActions::addTag(const Notes& notes, const Uuid& tag) const {
    auto* added = environment_.context().find<CDTag>(tag);
    if (added == nullptr) return;
    forEach(notes, [&](CDNote& note) { environment_.notes().addTag(note, *added); });
}

void NoteActions::removeTag(const Notes& notes, const Uuid& tag) const {
    auto* removed = environment_.context().find<CDTag>(tag);
    if (removed == nullptr) return;
    forEach(notes, [&](CDNote& note) { environment_.notes().removeTag(note, *removed); });
}

CDTag* NoteActions::tagOf(const ChosenTag& chosen) const {
    StoreContext& context = environment_.context();
    CDTag* const known = chosen.id ? context.find<CDTag>(*chosen.id) : nullptr;
    if (known != nullptr) return known;
    return environment_.tags().findOrCreate(context, chosen.name.toStdString());
}

void NoteActions::changeTags(
    const Notes& notes,
    const std::vector<ChosenTag>& added,
    const std::vector<Uuid>& removed) const {
    if (added.empty() && removed.empty()) return;
    std::vector<CDTag*> gained;
    try {
        for (const ChosenTag& tag : added) {
            gained.push_back(tagOf(tag));
        }
    } catch (const UserError& error) {
        return showNotice(parent_, error.what());
    }
    std::vector<CDTag*> lost;
    for (const Uuid& tag : removed) {
        lost.push_back(environment_.context().find<CDTag>(tag));
    }
    std::erase(gained, nullptr);
    std::erase(lost, nullptr);
    forEach(notes, [&](CDNote& note) {
        for (CDTag* tag : gained) {
            environment_.notes().addTag(note, *tag);
        }
        for (CDTag* tag : lost) {
            environment_.notes().removeTag(note, *tag);
        }
    });
}

void NoteActions::moveToTrash(const Notes& notes) const {
    forEach(notes, [&](CDNote& note) { environment_.notes().moveToTrash(note); });
}

void NoteActions::restore(const Notes& notes) const {
    forEach(notes, [&](CDNote& note) {
        if (note.trashedAt) environment_.notes().restoreFromTrash(note);
    });
}

void NoteActions::deleteForGood(const Notes& notes) const {
    forEach(notes, [&](CDNote& note) {
        if (note.trashedAt) environment_.notes().deleteNote(environment_.context(), note);
    });
}

void NoteActions::emptyTrash(Notes notes, std::function<void()> done) const {
    environment_.inBackground(
        [&environment = environment_,
         notes = std::move(notes)](StoreContext& context, const std::stop_token& stop) {
            LibraryCare care(
                environment.store(), environment.clock(), environment.random(), environment.log());
            care.backUpBefore("purge", stop);
            for (const Uuid& id : notes) {
                auto* const note = context.find<CDNote>(id);
                if (note != nullptr && note->trashedAt) {
                    environment.notes().deleteNote(context, *note);
                }
            }
            context.save();
        },
        parent_,
        std::move(done),
        [parent = parent_](const std::string& sentence) { showNotice(parent, sentence); });
}

QString NoteActions::describe(const Notes& notes) const {
    if (notes.size() != 1) return shownCount(notes.size(), "note", "notes");
    const auto* note = environment_.context().find<CDNote>(notes.front());
    const std::string title = note == nullptr ? "" : note->title.valueOr("");
    return title.empty() ? QString("the untitled note")
                         : QString("“%1”").arg(QString::fromStdString(title).left(60));
}

void NoteActions::forEach(const Notes& notes, const std::function<void(CDNote&)>& change) const {
    for (const Uuid& id : notes) {
        if (auto* note = environment_.context().find<CDNote>(id)) change(*note);
    }
    environment_.save(parent_);
}

std::optional<Uuid> NoteActions::saved(const CDNote& note) const {
    const Uuid id = *note.id;
    if (!environment_.save(parent_)) return std::nullopt;
    return id;
}

}  // namespace tesserine::app
