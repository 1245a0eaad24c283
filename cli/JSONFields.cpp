#include "cli/JSONFields.h"

#include "base/Text.h"
#include "cli/CommandError.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

CommandError wrongType(std::string_view name, std::string_view expected) {
    return CommandError::badInput(
        "The field “" + std::string(name) + "” must be " + std::string(expected) + ".");
}

std::string cleanText(const boost::json::value& value) {
    return text::sanitized(std::string(value.as_string()));
}

}  // namespace

const boost::json::value* JSONFields::find(std::string_view name) {
    read_.emplace(name);
    const boost::json::value* value = object_.if_contains(name);
    return value == nullptr || value->is_null() ? nullptr : value;
}

std::optional<std::string> JSONFields::text(std::string_view name) {
    const boost::json::value* value = find(name);
    if (value == nullptr) return std::nullopt;
    if (!value->is_string()) throw wrongType(name, "a text");
    return cleanText(*value);
}

std::string JSONFields::requiredText(std::string_view name) {
    if (auto value = text(name)) return std::move(*value);
    throw CommandError::badInput("The field “" + std::string(name) + "” is missing.");
}

std::optional<std::int64_t> JSONFields::integer(std::string_view name) {
    const boost::json::value* value = find(name);
    if (value == nullptr) return std::nullopt;
    boost::json::error_code error;
    const auto number = value->to_number<std::int64_t>(error);
    if (error) throw wrongType(name, "a whole number");
    return number;
}

std::vector<std::string> JSONFields::texts(std::string_view name) {
    const boost::json::value* value = find(name);
    if (value == nullptr) return {};
    if (!value->is_array()) throw wrongType(name, "an array of texts");
    std::vector<std::string> result;
    for (const boost::json::value& element : value->as_array()) {
        if (!element.is_string()) throw wrongType(name, "an array of texts");
        result.push_back(cleanText(element));
    }
    return result;
}

const boost::json::array& JSONFields::requiredArray(std::string_view name) {
    const boost::json::value* value = find(name);
    if (value == nullptr || !value->is_array()) throw wrongType(name, "an array");
    return value->as_array();
}

void JSONFields::refuseOthers() const {
    for (const auto& [name, value] : object_) {
        if (read_.contains(std::string_view(name))) continue;
        throw CommandError::badInput(
            "There is no field “" + text::sanitized(std::string(name)) + "” here.");
    }
}

}  // namespace tesserine::cli
