#include "core/body/CharacterReferences.h"

#include "base/UTF8.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tesserine::html {
namespace {

struct Reference {
    std::uint16_t nameOffset;
    std::uint16_t valueOffset;
    std::uint8_t nameLength;
    std::uint8_t valueLength;
};

#include "core/body/CharacterReferenceTable.inc"

static_assert(references.size() == 2231, "the standard's list of names is closed");

constexpr std::string_view nameOf(const Reference& reference) {
    return referenceNames.substr(reference.nameOffset, reference.nameLength);
}

constexpr bool areSorted() {
    for (std::size_t i = 1; i < references.size(); ++i) {
        if (nameOf(references[i - 1]) >= nameOf(references[i])) return false;
    }
    return true;
}
static_assert(areSorted(), "names are found by bisection");

constexpr std::size_t longestName = 32;        // with its semicolon
constexpr std::size_t longestUnfinished = 6;   // names that may lack it
constexpr std::size_t shortestUnfinished = 2;  // &gt, &lt

/// What 0x80 to 0x9F mean, as in Windows-1252; 0 where the number stands for itself.
constexpr std::array<char32_t, 32> windowsCharacters{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr char32_t replacement = 0xFFFD;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isAlphanumeric(char c) { return isDigit(c) || isLetter(c); }

int hexValue(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string_view valueNamed(std::string_view name) {
    const auto* const found =
        std::lower_bound(references.begin(), references.end(), name, [](const auto& row, auto key) {
            return nameOf(row) < key;
        });
    if (found == references.end() || nameOf(*found) != name) return {};
    return referenceValues.substr(found->valueOffset, found->valueLength);
}

char32_t characterNumbered(std::uint32_t number) {
    if (number >= 0x80 && number <= 0x9F) {
        const char32_t mapped = windowsCharacters[number - 0x80];
        return mapped != 0 ? mapped : number;
    }
    const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
    return number == 0 || isSurrogate || number > 0x10FFFF ? replacement : number;
}

/// Decodes what follows "&#"; returns how much of it belongs to the reference, or 0.
std::size_t appendNumeric(std::string& output, std::string_view text) {
    const bool isHex = !text.empty() && (text[0] == 'x' || text[0] == 'X');
    const std::uint32_t base = isHex ? 16 : 10;
    const std::size_t start = isHex ? 1 : 0;
    std::size_t end = start;
    std::uint32_t number = 0;
    for (; end < text.size(); ++end) {
        const int digit = hexValue(text[end]);
        if (digit < 0 || static_cast<std::uint32_t>(digit) >= base) break;
        // Beyond the last character it only has to stay beyond.
        number = std::min(number * base + static_cast<std::uint32_t>(digit), 0x110000U);
    }
    if (end == start) return 0;
    utf8::append(output, characterNumbered(number));
    return end < text.size() && text[end] == ';' ? end + 1 : end;
}

/// Decodes what follows "&"; returns how much of it belongs to the reference, or 0.
std::size_t appendNamed(std::string& output, std::string_view text, ReferenceContext context) {
    std::size_t length = 0;
    while (length < std::min(text.size(), longestName) && isAlphanumeric(text[length])) {
        ++length;
    }
    if (length < text.size() && text[length] == ';') {
        const std::string_view value = valueNamed(text.substr(0, length + 1));
        output += value;
        if (!value.empty()) return length + 1;
    }
    for (length = std::min(length, longestUnfinished); length >= shortestUnfinished; --length) {
        const std::string_view value = valueNamed(text.substr(0, length));
        if (value.empty()) continue;
        const char next = length < text.size() ? text[length] : ' ';
        const bool isText = next == '=' || isAlphanumeric(next);
        if (context == ReferenceContext::attribute && isText) return 0;
        output += value;
        return length;
    }
    return 0;
}

struct Common {
    std::string_view name;
    std::string_view value;
};

/// What nearly all references in real bodies are.
constexpr std::array commonReferences{
    Common{"amp;", "&"},
    Common{"lt;", "<"},
    Common{"gt;", ">"},
    Common{"quot;", "\""},
    Common{"nbsp;", "\u00A0"},
};

std::size_t appendReference(std::string& output, std::string_view text, ReferenceContext context) {
    if (text.empty()) return 0;
    if (text[0] == '#') {
        const std::size_t length = appendNumeric(output, text.substr(1));
        return length == 0 ? 0 : length + 1;
    }
    for (const Common& common : commonReferences) {
        if (!text.starts_with(common.name)) continue;
        output += common.value;
        return common.name.size();
    }
    return appendNamed(output, text, context);
}

}  // namespace

void appendDecoded(std::string& output, std::string_view text, ReferenceContext context) {
    while (!text.empty()) {
        const std::size_t start = std::min(text.find('&'), text.size());
        output += text.substr(0, start);
        text.remove_prefix(start);
        if (text.empty()) return;
        text.remove_prefix(1);
        const std::size_t length = appendReference(output, text, context);
        if (length == 0) output += '&';
        text.remove_prefix(length);
    }
}

}  // namespace tesserine::html
