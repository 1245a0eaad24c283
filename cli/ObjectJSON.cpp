#include "cli/ObjectJSON.h"

#include "base/Digest.h"
#include "base/UserError.h"

#include <cmath>
#include <type_traits>

namespace tesserine::cli {

namespace {

boost::json::value valueOf(
    StoreObject& object,
    std::size_t attribute,
    const std::function<void(const std::string&)>& unreadable) {
    if (!unreadable) return asJSON(object.value(attribute));
    try {
        return asJSON(object.value(attribute));
    } catch (const UserError&) {
        unreadable(object.entity().attributes[attribute].name);
        return nullptr;
    }
}

boost::json::value targetsOf(StoreObject& object, std::size_t relationship) {
    boost::json::array ids;
    for (StoreObject* target : object.related(relationship)) {
        ids.push_back(asJSON(target->uuid()));
    }
    return ids;
}

}  // namespace

boost::json::value asJSON(const Value& value) {
    return std::visit(
        []<class T>(const T& held) -> boost::json::value {
            if constexpr (std::is_same_v<T, std::monostate>) {
                return nullptr;
            } else if constexpr (std::is_same_v<T, Instant>) {
                return boost::json::string(held.iso());
            } else if constexpr (std::is_same_v<T, Uuid>) {
                return boost::json::string(held.text());
            } else if constexpr (std::is_same_v<T, Bytes>) {
                return {{"bytes", held.size()}, {"sha256", sha256Hex(held)}};
            } else if constexpr (std::is_same_v<T, double>) {
                return std::isfinite(held) ? boost::json::value(held) : nullptr;
            } else {
                return boost::json::value(held);
            }
        },
        value);
}

boost::json::value asJSON(const std::optional<Uuid>& id) {
    return id ? boost::json::value(id->text()) : nullptr;
}

boost::json::value asJSON(const std::optional<Instant>& instant) {
    return instant ? boost::json::value(instant->iso()) : nullptr;
}

boost::json::value asJSON(const std::optional<std::string>& text) {
    return text ? boost::json::value(*text) : nullptr;
}

boost::json::array asJSON(const std::vector<std::string>& texts) {
    boost::json::array array;
    for (const std::string& text : texts) {
        array.emplace_back(text);
    }
    return array;
}

boost::json::object asJSON(
    StoreObject& object,
    Detail detail,
    const std::function<void(const std::string& attribute)>& unreadable) {
    const EntityDescription& entity = object.entity();
    boost::json::object result;
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        const AttributeDescription& attribute = entity.attributes[i];
        if (detail == Detail::header && attribute.tier != Tier::header) continue;
        result[attribute.name] = valueOf(object, i, unreadable);
    }
    for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
        const RelationshipDescription& relationship = entity.relationships[i];
        if (!relationship.isToMany) {
            StoreObject* target = object.target(i);
            result[relationship.name] = target == nullptr ? nullptr : asJSON(target->uuid());
        } else if (detail == Detail::whole) {
            result[relationship.name] = targetsOf(object, i);
        }
    }
    return result;
}

}  // namespace tesserine::cli
