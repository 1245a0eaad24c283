#include "sync/MissingFiles.h"

#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"
#include "sync/SyncLedger.h"

namespace tesserine {

std::map<Uuid, std::string> missingFiles(StoreContext& context, const CDNote& note) {
    std::map<Uuid, std::string> missing;
    if (!note.id) return missing;
    const auto files =
        context.fetch<CDAttachment>({.predicate = {"fileData == nil AND note.id == %@", *note.id}});
    if (files.empty()) return missing;
    const auto damaged = SyncLedger(context).damagedFiles();
    for (const CDAttachment* file : files) {
        if (!file->id) continue;
        const bool isDamaged = damaged.contains(file->sha256.valueOr(""));
        missing.emplace(*file->id, isDamaged ? "Damaged on the service" : "Not downloaded yet");
    }
    return missing;
}

}  // namespace tesserine
