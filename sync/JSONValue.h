#pragma once

#include <boost/json/value.hpp>

#include <concepts>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tesserine {

/// What JSON writes as a number.
template <class T>
concept JSONNumber = !std::same_as<T, bool> && (std::integral<T> || std::floating_point<T>);

/// A JSON value of any shape: payloads of records, and replies that are read loosely.
///
/// Numbers are doubles, integral or not. Two values are equal when case and content are.
class JSONValue {
public:
    enum class Case { boolean, number, string, array, object, null };
    using Array = std::vector<JSONValue>;
    using Object = std::map<std::string, JSONValue, std::less<>>;

    JSONValue() = default;  ///< null
    // NOLINTBEGIN(google-explicit-constructor): each stands for its content, as in a literal
    template <std::same_as<bool> Boolean>
    JSONValue(Boolean truth) : content_(truth) {}
    template <JSONNumber Number>
    JSONValue(Number number) : content_(static_cast<double>(number)) {}
    JSONValue(std::string text) : content_(std::move(text)) {}
    JSONValue(const char* text) : content_(text) {}
    JSONValue(Array array) : content_(std::move(array)) {}
    JSONValue(Object object) : content_(std::move(object)) {}
    // NOLINTEND(google-explicit-constructor)

    /// Reads a JSON text (RFC 8259). Throws `WireError` ("unrecognised JSON").
    static JSONValue decode(std::string_view text);
    static JSONValue from(const boost::json::value& json);
    /// Whole numbers within 64 bits become integers, so that they are written without a fraction.
    boost::json::value toJSON() const;

    Case kind() const { return static_cast<Case>(content_.index()); }
    bool isNull() const { return kind() == Case::null; }
    /// The content when it is of that case, else null.
    const bool* boolean() const { return std::get_if<bool>(&content_); }
    const double* number() const { return std::get_if<double>(&content_); }
    const std::string* string() const { return std::get_if<std::string>(&content_); }
    const Array* array() const { return std::get_if<Array>(&content_); }
    const Object* object() const { return std::get_if<Object>(&content_); }
    /// The member of an object; null when this is no object or has no such member.
    const JSONValue* member(std::string_view key) const;

    friend bool operator==(const JSONValue& a, const JSONValue& b) {
        return a.content_ == b.content_;
    }

private:
    // In the order of `Case`.
    using Content = std::variant<bool, double, std::string, Array, Object, std::monostate>;
    Content content_ = std::monostate{};
};

using JSONObject = JSONValue::Object;

JSONObject jsonObject(const boost::json::object& object);
boost::json::object toJSON(const JSONObject& object);

}  // namespace tesserine
