#include "core/import/ImportPreviewRun.h"

#include "core/store/StoreContext.h"

#include <utility>

namespace tesserine {
namespace {

std::string joinedPath(const std::vector<std::string>& names) {
    std::string path;
    for (const std::string& name : names) {
        path += path.empty() ? name : " / " + name;
    }
    return path;
}

}  // namespace

void ImportPreviewRun::add(const ImportDraft& draft, const Look& look) {
    const CDNote* present = notes_.findByImportFingerprint(context_, draft.fingerprint);
    const bool isRepeated = fingerprints_.contains(draft.fingerprint);
    ImportedNote note{
        .title = draft.title,
        .outcome = outcomeOf(isRepeated || present != nullptr),
        .warnings = draft.warnings};
    if (present != nullptr) note.noteID = present->id;

    Files files;
    if (note.outcome != ImportOutcome::skipped) {
        files = look(note.warnings);
        if (!draft.notebookPath.empty()) notebooks_.insert(joinedPath(draft.notebookPath));
        tags_.insert(draft.tags.begin(), draft.tags.end());
        if (options_.tag) tags_.insert(*options_.tag);
    }
    fingerprints_.insert(draft.fingerprint);
    preview_.sourceBytes += draft.originalSource.size();
    preview_.attachments += files.count;
    preview_.attachmentBytes += files.byteCount;
    preview_.notes.push_back(std::move(note));
}

ImportOutcome ImportPreviewRun::outcomeOf(bool isDuplicate) const {
    if (!isDuplicate) return ImportOutcome::imported;
    switch (options_.duplicates) {
    case DuplicatePolicy::skip: return ImportOutcome::skipped;
    case DuplicatePolicy::replace: return ImportOutcome::replaced;
    case DuplicatePolicy::keepBoth: break;
    }
    return ImportOutcome::imported;
}

void ImportPreviewRun::addFailure(std::string title, std::string sentence) {
    preview_.notes.push_back({.title = std::move(title), .warnings = {std::move(sentence)}});
}

ImportPreview ImportPreviewRun::finish() {
    for (const ImportedNote& note : preview_.notes) {
        if (note.outcome == ImportOutcome::failed) ++preview_.unreadable;
        if (note.noteID || note.outcome == ImportOutcome::skipped) ++preview_.duplicates;
    }
    preview_.found = preview_.notes.size();
    preview_.notebooks.assign(notebooks_.begin(), notebooks_.end());
    preview_.tags.assign(tags_.begin(), tags_.end());
    return std::move(preview_);
}

}  // namespace tesserine
