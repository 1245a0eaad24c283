#include "app/editor/OpenNote.h"

#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"

namespace tesserine::app {

bool OpenNote::open(const Uuid& id) {
    const CDNote* const found = notes_.findNote(context_, id);
    if (found == nullptr) return false;
    if (id_ != id) editedSince_.reset();
    id_ = id;
    remember(*found);
    return true;
}

CDNote* OpenNote::note() const { return id_ ? notes_.findNote(context_, *id_) : nullptr; }

OpenNote::State OpenNote::state() const {
    const CDNote* const found = note();
    if (found == nullptr) return State::deleted;
    const bool isCurrent = found->contentVersion.valueOr(0) == version_
                           && found->title.valueOr("") == title_
                           && found->html.valueOr("") == html_;
    return isCurrent ? State::current : State::changedElsewhere;
}

NoteService::EditOutcome OpenNote::write(const Edit& edit) {
    CDNote& written = notes_.getNote(context_, id_.value_or(Uuid()));
    const auto outcome = notes_.saveEdit(
        context_,
        written,
        {.title = edit.title, .html = edit.html, .loadedHTML = html_, .loadedVersion = version_});
    keepRevision(written);
    remember(written);
    return outcome;
}

void OpenNote::remember(const CDNote& note) {
    title_ = note.title.valueOr("");
    html_ = note.html.valueOr("");
    version_ = note.contentVersion.valueOr(0);
}

void OpenNote::keepRevision(CDNote& note) {
    const Instant now = clock_.now();
    const bool isAnew = !editedSince_ || !writtenAt_ || now - *writtenAt_ > longestPause;
    writtenAt_ = now;
    if (isAnew) {
        editedSince_ = now;
    } else if (now - *editedSince_ >= revisionInterval) {
        notes_.takeRevision(context_, note, NoteRevisionReason::autosave);
        editedSince_ = now;
    }
}

}  // namespace tesserine::app
