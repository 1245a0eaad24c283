#include "core/import/Reconciliation.h"

#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"

#include <algorithm>
#include <set>
#include <utility>

namespace tesserine {
namespace {

constexpr std::size_t notesBetweenResets = 200;

/// The digests of the bytes that the note's files have in the library.
std::set<SHA256Digest> filesOf(const CDNote& note, StoreContext& context) {
    std::set<SHA256Digest> digests;
    for (const CDAttachment* attachment : note.attachments.all()) {
        if (attachment->fileData) digests.insert(sha256(*attachment->fileData));
        context.releaseLargeValues();
    }
    return digests;
}

}  // namespace

void Reconciliation::expect(const std::optional<Uuid>& note, std::vector<SHA256Digest> files) {
    expected_.push_back({note, std::move(files)});
}

std::optional<ImportCheck> Reconciliation::run(
    StoreContext& context, const std::stop_token& stop) const {
    ImportCheck check;
    for (const auto& [id, files] : expected_) {
        if (stop.stop_requested()) return std::nullopt;
        check.expectedFiles += files.size();
        if (++check.expectedNotes % notesBetweenResets == 0) context.reset();
        const auto* note = id ? context.find<CDNote>(*id) : nullptr;
        if (note == nullptr) continue;
        ++check.notes;
        if (files.empty()) continue;
        const auto present = filesOf(*note, context);
        check.files += static_cast<std::size_t>(std::ranges::count_if(
            files, [&](const SHA256Digest& digest) { return present.contains(digest); }));
    }
    context.reset();
    return check;
}

}  // namespace tesserine
