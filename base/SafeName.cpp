#include "base/Files.h"
#include "base/Text.h"
#include "base/UTF8.h"

#include <algorithm>
#include <array>

namespace tesserine::files {
namespace {

constexpr std::size_t maximumCharacters = 80;
constexpr std::size_t maximumBytes = 200;
/// A longer "extension" is part of a sentence, and may be cut.
constexpr std::size_t maximumExtensionBytes = 16;

constexpr std::array reservedNames = {
    std::string_view("con"),
    std::string_view("prn"),
    std::string_view("aux"),
    std::string_view("nul"),
    std::string_view("com"),
    std::string_view("lpt"),
};

bool isControl(char32_t scalar) {
    return scalar < 0x20 || (scalar >= 0x7F && scalar <= 0x9F) || scalar == 0x2028
           || scalar == 0x2029;
}

/// Marks that turn the reading direction: "gpj.exe" may be shown as "exe.jpg" behind one.
bool isDirectionMark(char32_t scalar) {
    return scalar == 0x061C || scalar == 0x200E || scalar == 0x200F
           || (scalar >= 0x202A && scalar <= 0x202E) || (scalar >= 0x2066 && scalar <= 0x2069);
}

std::string withSafeCharacters(std::string_view name) {
    constexpr std::string_view forbidden = "/\\:*?\"<>|";
    std::string safe;
    while (!name.empty()) {
        const utf8::Scalar scalar = utf8::first(name);
        const std::string_view bytes = name.substr(0, scalar.length);
        name.remove_prefix(scalar.length);
        if (isDirectionMark(scalar.value)) continue;
        const bool isForbidden = bytes.size() == 1 && forbidden.find(bytes[0]) != forbidden.npos;
        if (isForbidden || isControl(scalar.value)) {
            safe.push_back('-');
        } else {
            safe.append(bytes);
        }
    }
    return safe;
}

void replaceDotsAndSpacesAtEnds(std::string& name) {
    constexpr std::string_view dotsAndSpaces = ". ";
    const std::size_t first = std::min(name.find_first_not_of(dotsAndSpaces), name.size());
    std::fill_n(name.begin(), first, '-');
    const std::size_t last = name.find_last_not_of(dotsAndSpaces);
    if (last != std::string::npos) {
        std::fill(name.begin() + static_cast<std::ptrdiff_t>(last) + 1, name.end(), '-');
    }
}

bool isLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// The extension with its dot, or nothing.
std::string_view extensionOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    const std::string_view extension = name.substr(dot);
    const bool isOne = extension.size() > 1 && extension.size() <= maximumExtensionBytes
                       && std::ranges::all_of(extension.substr(1), isLetterOrDigit);
    return isOne ? extension : std::string_view{};
}

/// Whole characters from the front, within both limits.
std::string_view cut(std::string_view stem, std::size_t characters, std::size_t bytes) {
    std::string_view kept = text::prefix(stem, characters);
    std::size_t end = 0;
    text::forEachCharacter(kept, [&](std::string_view cluster) {
        if (end + cluster.size() > bytes) return false;
        end += cluster.size();
        return true;
    });
    return kept.substr(0, end);
}

/// Names that mean devices on other systems, with or without an extension: "con", "COM1.txt".
bool isReserved(std::string_view name) {
    const std::string stem = text::asciiLowercased(name.substr(0, name.find('.')));
    if (stem.size() < 3 || stem.size() > 4) return false;
    const auto* const found = std::ranges::find(reservedNames, std::string_view(stem).substr(0, 3));
    if (found == reservedNames.end()) return false;
    const bool takesNumber = *found == "com" || *found == "lpt";
    return takesNumber ? stem.size() == 4 && stem[3] >= '0' && stem[3] <= '9' : stem.size() == 3;
}

}  // namespace

std::string safeName(std::string_view name) {
    std::string safe = text::composed(withSafeCharacters(text::sanitized(std::string(name))));
    if (text::trimmed(safe).empty()) return "Untitled";
    replaceDotsAndSpacesAtEnds(safe);

    const std::string extension(extensionOf(safe));
    const std::string_view stem = std::string_view(safe).substr(0, safe.size() - extension.size());
    const std::size_t extensionCharacters = text::characterCount(extension);
    std::string result(
        cut(stem, maximumCharacters - extensionCharacters, maximumBytes - extension.size()));
    replaceDotsAndSpacesAtEnds(result);
    if (isReserved(result)) result.insert(std::min(result.find('.'), result.size()), "_");
    return result + extension;
}

}  // namespace tesserine::files
