#include "app/editor/OpenNote.h"

#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"

#include <utility>

namespace tesserine::app {

bool OpenNote::open(const Uuid& id) {
    const CDNote* const found = notes_.findNote(context_, id);
    if (found == nullptr) return false;
    if (id_ != id) editedSince_.reset();
    id_ = id;
    title_ = found->title.valueOr("");
    html_ = found->html.valueOr("");
    version_ = found->contentVersion.valueOr(0);
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

NoteService::EditOutcome OpenNote::write(Edit edit) {
    const Written written = perform(beginWriting(std::move(edit)), context_, notes_);
    endWriting(written);
    return written.outcome;
}

OpenNote::Writing OpenNote::beginWriting(Edit edit) {
    return {
        .id = id_.value_or(Uuid()),
        .edit = std::move(edit),
        .loadedHTML = html_,
        .loadedVersion = version_,
        .keepsRevision = isRevisionDue()};
}

OpenNote::Written OpenNote::perform(
    Writing writing, StoreContext& context, const NoteService& notes) {
    CDNote& note = notes.getNote(context, writing.id);
    const bool hasTitle = writing.edit.title.has_value();
    const bool hasBody =
        writing.edit.html.has_value() || note.html.valueOr("") == writing.loadedHTML;
    const auto outcome = notes.saveEdit(
        context,
        note,
        {.title = std::move(writing.edit.title),
         .html = std::move(writing.edit.html),
         .loadedHTML = std::move(writing.loadedHTML),
         .loadedVersion = writing.loadedVersion});
    if (writing.keepsRevision) notes.takeRevision(context, note, NoteRevisionReason::autosave);
    Written written{.version = note.contentVersion.valueOr(0), .outcome = outcome};
    if (hasTitle) written.title = note.title.valueOr("");
    if (hasBody) written.html = note.html.valueOr("");
    return written;
}

void OpenNote::endWriting(const Written& written) {
    if (written.title) title_ = *written.title;
    if (!written.html) return;
    html_ = *written.html;
    version_ = written.version;
}

bool OpenNote::isRevisionDue() {
    const Instant now = clock_.now();
    const bool isAnew = !editedSince_ || !writtenAt_ || now - *writtenAt_ > longestPause;
    const bool isDue = !isAnew && now - *editedSince_ >= revisionInterval;
    writtenAt_ = now;
    if (isAnew || isDue) editedSince_ = now;
    return isDue;
}

}  // namespace tesserine::app
