#include "core/services/PassageService.h"

#include "base/Encoding.h"
#include "base/Text.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/AttributedTextWriter.h"
#include "core/body/LockedPassages.h"
#include "core/body/PassageSelection.h"
#include "core/body/SelectiveEncryption.h"
#include "core/services/NoteService.h"
#include "core/store/StoreContext.h"

#include <algorithm>

namespace tesserine {
namespace {

std::vector<PassageRange> lockablePlaces(const AttributedText& body, std::string_view passage) {
    auto places = placesOf(body, passage);
    if (places.size() > PassageService::mostPlaces) throw PassageError::tooManyPlaces();
    const bool areLockable = std::ranges::all_of(
        places, [&](const PassageRange& place) { return isLockable(body, place); });
    if (places.empty() || !areLockable) throw PassageError::notLockable();
    return places;
}

/// Whether every line of the passage stands in `text`. In the plain text of a list there are marks
/// between the lines.
bool holds(std::string_view text, std::string_view passage) {
    bool isFound = !text::isBlank(passage);
    while (isFound && !passage.empty()) {
        const std::string_view line = passage.substr(0, passage.find('\n'));
        isFound = text.find(text::trimmed(line)) != std::string_view::npos;
        passage.remove_prefix(std::min(line.size() + 1, passage.size()));
    }
    return isFound;
}

bool isConflictRevision(const CDNoteRevision* revision) {
    return revision->reason == std::string(rawValue(NoteRevisionReason::conflict));
}

}  // namespace

void PassageService::lock(
    StoreContext& context,
    CDNote& note,
    std::string_view passage,
    std::string_view passphrase) const {
    AttributedText body = attributedText(note.html.valueOr(""));
    const auto places = lockablePlaces(body, passage);
    std::string text = plainText(body, places.front());
    const std::string blob = SelectiveEncryption::encrypt(text, passphrase, random_);
    wipe(text);
    // From the last to the first: the offsets of those before stay what they are.
    for (std::size_t i = places.size(); i-- > 0;) {
        lockRange(body, places[i], blob);
    }
    notes_.updateNote(context, note, {.html = canonicalHTML(body)});
}

std::vector<std::string> PassageService::blobs(const CDNote& note) {
    const std::string body = note.html.valueOr("");
    std::vector<std::string> blobs;
    for (const LockedPassage& passage : lockedPassages(body)) {
        blobs.emplace_back(passage.blob);
    }
    return blobs;
}

void PassageService::removeLock(
    StoreContext& context, CDNote& note, std::size_t index, std::string_view text) const {
    const std::string body = note.html.valueOr("");
    const LockedPassage passage = lockedPassages(body).at(index);
    notes_.updateNote(context, note, {.html = withoutLock(body, passage, text)});
}

PassageService::Copies PassageService::copiesOf(const CDNote& note, std::string_view passage) {
    Copies copies;
    copies.isInNote =
        holds(note.plainText.valueOr(""), passage) || holds(note.title.valueOr(""), passage);
    copies.isInSource = note.originalSource && holds(textOf(*note.originalSource), passage);
    for (CDNoteRevision* revision : note.revisions.all()) {
        const bool isCopy = holds(revision->plainText.valueOr(""), passage)
                            || holds(revision->title.valueOr(""), passage);
        if (isCopy) copies.revisions.push_back(revision);
    }
    return copies;
}

void PassageService::remove(StoreContext& context, CDNote& note, const Copies& copies) {
    for (CDNoteRevision* revision : copies.revisions) {
        context.remove(*revision);
    }
    if (copies.isInSource) note.originalSource = std::nullopt;
    if (note.hasConflict.valueOr(false)) {
        note.hasConflict = std::ranges::any_of(note.revisions.all(), isConflictRevision);
    }
}

}  // namespace tesserine
