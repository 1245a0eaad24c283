#include "sync/JSONValue.h"

#include "base/JSON.h"
#include "sync/WireCoding.h"

#include <cmath>

namespace tesserine {
namespace {

boost::json::value numberJSON(double number) {
    constexpr double limit = 9'223'372'036'854'775'808.0;  // 2^63
    const bool isWhole = std::abs(number) < limit && std::trunc(number) == number;
    if (isWhole) return static_cast<std::int64_t>(number);
    return number;
}

}  // namespace

JSONValue JSONValue::decode(std::string_view text) {
    try {
        return from(json::parse(text));
    } catch (const json::JSONError&) {
        throw WireError("unrecognised JSON");
    }
}

JSONValue JSONValue::from(const boost::json::value& json) {
    switch (json.kind()) {
    case boost::json::kind::null: return {};
    case boost::json::kind::bool_: return json.get_bool();
    case boost::json::kind::int64: return json.get_int64();
    case boost::json::kind::uint64: return json.get_uint64();
    case boost::json::kind::double_: return json.get_double();
    case boost::json::kind::string: return std::string(json.get_string());
    case boost::json::kind::array: {
        Array array;
        array.reserve(json.get_array().size());
        for (const boost::json::value& element : json.get_array()) {
            array.push_back(from(element));
        }
        return array;
    }
    case boost::json::kind::object: return jsonObject(json.get_object());
    }
    throw WireError("unrecognised JSON");
}

boost::json::value JSONValue::toJSON() const {
    switch (kind()) {
    case Case::boolean: return *boolean();
    case Case::number: return numberJSON(*number());
    case Case::string: return boost::json::string(*string());
    case Case::array: {
        boost::json::array elements;
        elements.reserve(array()->size());
        for (const JSONValue& element : *array()) {
            elements.push_back(element.toJSON());
        }
        return elements;
    }
    case Case::object: return tesserine::toJSON(*object());
    case Case::null: break;
    }
    return nullptr;
}

const JSONValue* JSONValue::member(std::string_view key) const {
    const Object* const members = object();
    if (members == nullptr) return nullptr;
    const auto found = members->find(key);
    return found == members->end() ? nullptr : &found->second;
}

JSONObject jsonObject(const boost::json::object& object) {
    JSONObject members;
    for (const auto& member : object) {
        members.insert_or_assign(std::string(member.key()), JSONValue::from(member.value()));
    }
    return members;
}

boost::json::object toJSON(const JSONObject& object) {
    boost::json::object members;
    members.reserve(object.size());
    for (const auto& [key, value] : object) {
        members.emplace(key, value.toJSON());
    }
    return members;
}

}  // namespace tesserine
