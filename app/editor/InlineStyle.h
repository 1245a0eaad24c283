#pragma once

#include "base/Text.h"
#include "core/body/HTMLSink.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tesserine::app::paste {

/// The value of an attribute; empty when it is not there.
inline std::string_view attribute(
    std::span<const HTMLAttribute> attributes, std::string_view name) {
    const auto found = std::ranges::find(attributes, name, &HTMLAttribute::name);
    return found == attributes.end() ? std::string_view() : found->value;
}

/// What an inline style declares for one property, in lower case; empty when nothing.
inline std::string declared(std::string_view style, std::string_view property) {
    while (!style.empty()) {
        const std::string_view declaration = style.substr(0, style.find(';'));
        style.remove_prefix(std::min(declaration.size() + 1, style.size()));
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos) continue;
        const auto name = text::asciiLowercased(text::trimmed(declaration.substr(0, colon)));
        if (name != property) continue;
        return text::asciiLowercased(text::trimmed(declaration.substr(colon + 1)));
    }
    return {};
}

/// The number that a text begins with: 12 in "12px".
inline std::optional<int> leadingNumber(std::string_view text) {
    int value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc() ? std::optional(value) : std::nullopt;
}

}  // namespace tesserine::app::paste
