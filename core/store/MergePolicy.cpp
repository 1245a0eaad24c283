#include "core/store/MergePolicy.h"

#include "core/model/NoteEntities.h"
#include "core/model/NoteRevisionReason.h"
#include "core/store/StoreContext.h"

#include <cassert>

namespace tesserine {
namespace {

std::optional<std::string> asText(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

}  // namespace

const Value& SaveConflict::storedValue(std::string_view name) const {
    const auto attribute = object->entity().attributeNamed(name);
    assert(attribute && "the entity has such an attribute");
    return stored[*attribute];
}

void ConflictPreservingMergePolicy::resolve(
    std::vector<SaveConflict>& conflicts, StoreContext& context) {
    for (const SaveConflict& conflict : conflicts) {
        if (conflict.object->entity().kind != EntityKind::note || conflict.object->isDeleted()) {
            continue;
        }
        auto& note = static_cast<CDNote&>(*conflict.object);
        const auto body = asText(conflict.storedValue("html"));
        // Nothing is lost when the body was not changed here, or there is no other body to lose.
        if (!note.isChanged(note.html.index()) || !body || body->empty() || note.html == body) {
            continue;
        }
        auto& revision = context.insert<CDNoteRevision>();
        revision.createdAt = context.now();
        revision.reason = std::string(rawValue(NoteRevisionReason::conflict));
        revision.title = asText(conflict.storedValue("title"));
        revision.html = body;
        revision.plainText = asText(conflict.storedValue("plainText"));
        revision.note = &note;
        note.hasConflict = true;
        log_.info("Preserved a conflicting note version as a revision.");
    }
}

}  // namespace tesserine
