#include "sync/RecordKinds.h"

#include <algorithm>

namespace tesserine {

std::optional<std::string_view> recordKindOf(EntityKind entity) {
    const auto* const found = std::ranges::find(recordKinds, entity, &RecordKind::entity);
    return found == recordKinds.end() ? std::nullopt : std::optional(found->name);
}

std::optional<EntityKind> entityOf(std::string_view kind, const JSONObject& payload) {
    const auto* const found = std::ranges::find(recordKinds, kind, &RecordKind::name);
    if (found == recordKinds.end()) return std::nullopt;
    if (found->entity != EntityKind::taskTemplate) return found->entity;
    const auto setting = payload.find(settingKey);
    const bool isTemplate =
        setting != payload.end() && setting->second == JSONValue(taskTemplateSetting);
    return isTemplate ? std::optional(found->entity) : std::nullopt;
}

}  // namespace tesserine
