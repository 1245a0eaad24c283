#pragma once

#include "core/model/Schema.h"
#include "sync/JSONValue.h"

#include <array>
#include <optional>
#include <string_view>

namespace tesserine {

/// A kind of record and the entity it stands for.
struct RecordKind {
    std::string_view name;
    EntityKind entity = EntityKind::note;
};

/// What travels, in the order in which changes are sent: what others refer to comes first.
inline constexpr std::array recordKinds = {
    RecordKind{"notebook", EntityKind::notebook},
    RecordKind{"tag", EntityKind::tag},
    RecordKind{"project", EntityKind::project},
    RecordKind{"note", EntityKind::note},
    RecordKind{"attachment", EntityKind::attachment},
    RecordKind{"task", EntityKind::task},
    RecordKind{"savedSearch", EntityKind::savedSearch},
    RecordKind{"setting", EntityKind::taskTemplate},
};

/// Settings share one kind; this key of their payload tells them apart.
inline constexpr const char* settingKey = "key";
inline constexpr const char* taskTemplateSetting = "taskTemplate";

/// The kind of an entity; none for one that never travels.
std::optional<std::string_view> recordKindOf(EntityKind entity);
/// The entity of a record; none for kinds and settings that a newer program made.
std::optional<EntityKind> entityOf(std::string_view kind, const JSONObject& payload);

}  // namespace tesserine
