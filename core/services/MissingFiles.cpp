#include "core/services/MissingFiles.h"

#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"

namespace tesserine {

std::set<Uuid> missingFiles(StoreContext& context, const CDNote& note) {
    std::set<Uuid> ids;
    if (!note.id) return ids;
    for (const CDAttachment* file : context.fetch<CDAttachment>(
             {.predicate = {"fileData == nil AND note.id == %@", *note.id}})) {
        if (file->id) ids.insert(*file->id);
    }
    return ids;
}

}  // namespace tesserine
