#include "sync/RecordFields.h"

#include "base/Text.h"
#include "core/body/CanonicalBody.h"
#include "sync/RecordKinds.h"
#include "sync/WireDate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>

namespace tesserine {
namespace {

struct Unsent {
    EntityKind entity;
    std::string_view attribute;
    bool isShared = false;  ///< it comes out alike on every device nevertheless
};

constexpr std::array unsent = {
    Unsent{EntityKind::note, "plainText", true},  // made of the body
    Unsent{EntityKind::note, "originalSource"},
    Unsent{EntityKind::note, "hasConflict"},
    Unsent{EntityKind::attachment, "fileData", true},  // travels as a blob
    Unsent{EntityKind::attachment, "thumbnailData"},
    Unsent{EntityKind::attachment, "integrityVerified"},
};

const Unsent* unsentAttribute(EntityKind entity, std::string_view name) {
    const auto* const found = std::ranges::find_if(
        unsent, [&](const Unsent& one) { return one.entity == entity && one.attribute == name; });
    return found == unsent.end() ? nullptr : found;
}

std::vector<RecordField> fieldsOf(const EntityDescription& entity) {
    std::vector<RecordField> fields;
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        const AttributeDescription& attribute = entity.attributes[i];
        if (i == entity.identity || unsentAttribute(entity.kind, attribute.name)) continue;
        fields.push_back({.key = wireKey(attribute.name), .index = i, .type = attribute.type});
    }
    for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
        const RelationshipDescription& link = entity.relationships[i];
        const std::string name = wireKey(link.name);
        if (!link.isToMany) {
            fields.push_back(
                {.key = name + "_id",
                 .form = RecordField::Form::link,
                 .index = i,
                 .destination = link.destination});
        } else if (link.ownsLinks) {
            fields.push_back(
                {.key = name.substr(0, name.size() - 1) + "_ids",  // "tags" as "tag_ids"
                 .form = RecordField::Form::linkSet,
                 .index = i,
                 .destination = link.destination});
        }
    }
    return fields;
}

bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }

template <class Integer>
std::optional<Value> integerValue(double number) {
    using Limits = std::numeric_limits<Integer>;
    constexpr double exact = 9'007'199'254'740'992.0;  // 2^53
    const double least = std::max(static_cast<double>(Limits::min()), -exact);
    const double most = std::min(static_cast<double>(Limits::max()), exact);
    const bool fits = number >= least && number <= most && std::trunc(number) == number;
    if (!fits) return std::nullopt;
    return Value(static_cast<Integer>(number));
}

std::optional<Value> textValue(const std::string& text, AttributeType type) {
    switch (type) {
    case AttributeType::string:
        // Made in its place: g++ 12 sees a false free in the moving of it.
        return std::optional<Value>(
            std::in_place, std::in_place_type<std::string>, text::sanitized(text));
    case AttributeType::date: {
        const auto date = wire::parseDate(text);
        return date ? std::optional<Value>(*date) : std::nullopt;
    }
    case AttributeType::uuid: {
        const auto id = Uuid::parse(text);
        return id ? std::optional<Value>(*id) : std::nullopt;
    }
    case AttributeType::binary: {
        auto bytes = fromBase64(text);
        return bytes ? std::optional<Value>(*std::move(bytes)) : std::nullopt;
    }
    case AttributeType::boolean:
    case AttributeType::int16:
    case AttributeType::int64:
    case AttributeType::real: return std::nullopt;
    }
    return std::nullopt;
}

std::optional<Value> numberValue(double number, AttributeType type) {
    switch (type) {
    case AttributeType::int16: return integerValue<std::int16_t>(number);
    case AttributeType::int64: return integerValue<std::int64_t>(number);
    case AttributeType::real: return Value(number);
    default: return std::nullopt;
    }
}

JSONValue sortedIdentifiers(const JSONValue::Array& received) {
    std::set<std::string> ids;
    for (const JSONValue& one : received) {
        if (const auto id = identifierIn(one)) ids.insert(id->wireText());
    }
    return JSONValue::Array(ids.begin(), ids.end());
}

/// The member as we would write it; none when it cannot be read.
std::optional<JSONValue> normalisedMember(const RecordField& field, const JSONValue& received) {
    switch (field.form) {
    case RecordField::Form::attribute: {
        const auto value = valueOf(received, field.type);
        return value ? std::optional(jsonOf(*value)) : std::nullopt;
    }
    case RecordField::Form::link: {
        if (received.isNull()) return JSONValue();
        const auto id = identifierIn(received);
        return id ? std::optional(JSONValue(id->wireText())) : std::nullopt;
    }
    case RecordField::Form::linkSet:
        if (received.array() == nullptr) return std::nullopt;
        return sortedIdentifiers(*received.array());
    }
    return std::nullopt;
}

}  // namespace

const std::vector<RecordField>& recordFields(EntityKind entity) {
    static const auto all = [] {
        std::array<std::vector<RecordField>, entityCount> fields;
        for (const RecordKind& kind : recordKinds) {
            fields[static_cast<std::size_t>(kind.entity)] =
                fieldsOf(Schema::library()[kind.entity]);
        }
        return fields;
    }();
    return all[static_cast<std::size_t>(entity)];
}

bool isShared(const EntityDescription& entity, std::string_view name) {
    if (const Unsent* const attribute = unsentAttribute(entity.kind, name)) {
        return attribute->isShared;
    }
    const auto link = std::ranges::find(entity.relationships, name, &RelationshipDescription::name);
    return link == entity.relationships.end() || recordKindOf(link->destination).has_value();
}

std::string wireKey(std::string_view name) {
    std::string key;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (isUpper(name[i]) && i > 0 && !isUpper(name[i - 1])) key.push_back('_');
        key.push_back(isUpper(name[i]) ? static_cast<char>(name[i] - 'A' + 'a') : name[i]);
    }
    return key;
}

JSONValue jsonOf(const Value& value) {
    struct Writer {
        JSONValue operator()(std::monostate /*null*/) const { return {}; }
        JSONValue operator()(bool truth) const { return truth; }
        JSONValue operator()(std::int16_t number) const { return number; }
        JSONValue operator()(std::int64_t number) const { return number; }
        JSONValue operator()(double number) const {
            return std::isfinite(number) ? JSONValue(number) : JSONValue();
        }
        JSONValue operator()(const std::string& text) const { return text; }
        JSONValue operator()(Instant date) const { return wire::formatDate(date); }
        JSONValue operator()(const Uuid& id) const { return id.wireText(); }
        JSONValue operator()(const Bytes& bytes) const { return base64(bytes); }
    };
    return std::visit(Writer{}, value);
}

std::optional<Value> valueOf(const JSONValue& json, AttributeType type) {
    switch (json.kind()) {
    case JSONValue::Case::null: return Value();
    case JSONValue::Case::boolean:
        if (type != AttributeType::boolean) return std::nullopt;
        return Value(*json.boolean());
    case JSONValue::Case::number: return numberValue(*json.number(), type);
    case JSONValue::Case::string: return textValue(*json.string(), type);
    case JSONValue::Case::array:
    case JSONValue::Case::object: return std::nullopt;
    }
    return std::nullopt;
}

std::optional<Uuid> identifierIn(const JSONValue& json) {
    return json.string() == nullptr ? std::nullopt : Uuid::parse(*json.string());
}

JSONObject normalised(EntityKind entity, const JSONObject& received, const JSONObject& present) {
    JSONObject result = received;
    for (const RecordField& field : recordFields(entity)) {
        const auto given = received.find(field.key);
        std::optional<JSONValue> member;
        if (given != received.end()) member = normalisedMember(field, given->second);
        const auto otherwise = present.find(field.key);
        if (!member && otherwise != present.end()) member = otherwise->second;
        result[field.key] = std::move(member).value_or(JSONValue());
    }
    const auto body = result.find("html");
    const bool hasBody = entity == EntityKind::note && body->second.string() != nullptr;
    if (hasBody) body->second = canonicalBody(*body->second.string()).html;
    return result;
}

}  // namespace tesserine
