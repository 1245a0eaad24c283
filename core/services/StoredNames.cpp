#include "core/services/StoredNames.h"

#include "base/Text.h"

namespace tesserine {

std::string storedNotebookName(std::string_view name) {
    const std::string_view trimmed = text::trimmed(name);
    return trimmed.empty() ? "Untitled Notebook" : std::string(trimmed);
}

std::string storedSavedSearchName(std::string_view name) {
    const std::string_view trimmed = text::trimmed(name);
    return trimmed.empty() ? "Untitled Search" : std::string(trimmed);
}

std::optional<std::string> storedTagName(std::string_view name) {
    const std::string_view trimmed = text::trimmed(name);
    if (trimmed.empty()) return std::nullopt;
    return std::string(trimmed);
}

std::optional<std::string> storedColor(std::string_view color) {
    if (color.starts_with('#')) color.remove_prefix(1);
    std::string result = "#";
    for (const char c : color) {
        const bool isDigit = c >= '0' && c <= '9';
        const bool isUpper = c >= 'A' && c <= 'F';
        const bool isLower = c >= 'a' && c <= 'f';
        if (!isDigit && !isUpper && !isLower) return std::nullopt;
        result += isLower ? static_cast<char>(c - 'a' + 'A') : c;
    }
    if (result.size() != 7) return std::nullopt;
    return result;
}

}  // namespace tesserine
