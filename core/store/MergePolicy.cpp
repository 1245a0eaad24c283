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

/// The attributes changed here whose stored values are others.
std::string replacedAttributes(const SaveConflict& conflict) {
    const auto& attributes = conflict.object->entity().attributes;
    std::string names;
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        if (!conflict.object->isChanged(i) || attributes[i].isExternal) continue;
        if (conflict.object->value(i) == conflict.stored[i]) continue;
        names += (names.empty() ? "" : ", ") + attributes[i].name;
    }
    return names;
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
        const std::string replaced = replacedAttributes(conflict);
        if (!conflict.object->isDeleted() && !replaced.empty()) {
            log_.info(
                "Another writer changed a " + conflict.object->entity().name
                + " meanwhile; kept from here: " + replaced + ".");
        }
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
