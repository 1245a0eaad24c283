#pragma once

#include "core/model/Schema.h"
#include "core/model/Value.h"
#include "sync/JSONValue.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// One member of a payload and the part of an object that it carries.
struct RecordField {
    enum class Form {
        attribute,
        link,     ///< to one object, as its identifier
        linkSet,  ///< to several, as a sorted list of identifiers
    };

    std::string key;  ///< lower snake case
    Form form = Form::attribute;
    std::size_t index = 0;  ///< among the entity's attributes or relationships
    AttributeType type = AttributeType::string;
    EntityKind destination = EntityKind::note;  ///< of a link
};

/// Everything of an entity that travels. What is made anew on every device (plain text, thumbnails)
/// or travels as a blob stays out, and so does what only this device knows.
const std::vector<RecordField>& recordFields(EntityKind entity);

/// Whether an attribute or relationship says the same on every device once they are in step: what
/// travels, and what is made of it. `entity` is one that travels.
bool isShared(const EntityDescription& entity, std::string_view name);

/// "sourceURL" as "source_url".
std::string wireKey(std::string_view name);

JSONValue jsonOf(const Value& value);
/// Null stays null; none for JSON that is no value of that type.
std::optional<Value> valueOf(const JSONValue& json, AttributeType type);
/// The identifier a text holds.
std::optional<Uuid> identifierIn(const JSONValue& json);

/// `received` as this device would write it: every known key is there (a missing or unreadable one
/// as in `present`), bodies are canonical, lists are sorted; unknown keys stay. Throws
/// `BodyError::tooLarge`.
JSONObject normalised(EntityKind entity, const JSONObject& received, const JSONObject& present);

}  // namespace tesserine
