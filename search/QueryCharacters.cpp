#include "search/QueryCharacters.h"

#include "base/UTF8.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>

namespace tesserine {

namespace {

bool isOfCategory(char32_t scalar, std::uint32_t mask) {
    return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) & mask) != 0;
}

bool isWordCharacter(char32_t scalar) {
    return isOfCategory(scalar, U_GC_L_MASK | U_GC_N_MASK | U_GC_CO_MASK);
}

/// What the tokenizer lets stand in a word and leaves out of it (SQLite, fts5_unicode2.c).
bool isAccent(char32_t scalar) { return scalar >= U'\u0300' && scalar <= U'\u0331'; }

bool isUnspacedScript(char32_t scalar) {
    static constexpr std::array<UScriptCode, 7> scripts{
        USCRIPT_HAN,
        USCRIPT_HIRAGANA,
        USCRIPT_KATAKANA,
        USCRIPT_THAI,
        USCRIPT_LAO,
        USCRIPT_KHMER,
        USCRIPT_MYANMAR};
    UErrorCode status = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(static_cast<UChar32>(scalar), &status);
    return std::ranges::find(scripts, script) != scripts.end();
}

template <class Test>
std::size_t count(std::string_view text, Test test) {
    std::size_t found = 0;
    while (!text.empty()) {
        const auto [scalar, length] = utf8::first(text);
        if (test(scalar)) ++found;
        text.remove_prefix(length);
    }
    return found;
}

}  // namespace

bool isWhiteSpace(char32_t scalar) { return u_isUWhiteSpace(static_cast<UChar32>(scalar)) != 0; }

bool hasWordCharacter(std::string_view text) { return count(text, isWordCharacter) > 0; }

bool hasDigit(std::string_view text) {
    return count(text, [](char32_t scalar) { return isOfCategory(scalar, U_GC_N_MASK); }) > 0;
}

bool isOnlyLetters(std::string_view text) {
    return count(text, [](char32_t scalar) { return !isOfCategory(scalar, U_GC_L_MASK); }) == 0;
}

std::size_t length(std::string_view text) {
    return count(text, [](char32_t) { return true; });
}

std::string_view withoutPunctuation(std::string_view text) {
    std::size_t begin = text.size();
    std::size_t end = 0;
    for (std::size_t place = 0; place < text.size();) {
        const auto [scalar, length] = utf8::first(text.substr(place));
        if (isWordCharacter(scalar)) {
            begin = std::min(begin, place);
            end = place + length;
        }
        place += length;
    }
    return begin < end ? text.substr(begin, end - begin) : std::string_view();
}

std::string_view firstWord(std::string_view text) {
    while (!text.empty()) {
        const auto [scalar, length] = utf8::first(text);
        if (isWordCharacter(scalar)) break;
        text.remove_prefix(length);
    }
    std::size_t end = 0;
    while (end < text.size()) {
        const auto [scalar, length] = utf8::first(text.substr(end));
        if (!isWordCharacter(scalar) && !isAccent(scalar)) break;
        end += length;
    }
    return text.substr(0, end);
}

bool hasUnspacedScript(std::string_view text) { return count(text, isUnspacedScript) > 0; }

std::string_view cutAtWord(std::string_view text, std::size_t byteLimit) {
    if (text.size() <= byteLimit) return text;
    std::size_t wordEnd = 0;
    std::size_t end = 0;
    while (end < text.size()) {
        const auto [scalar, length] = utf8::first(text.substr(end));
        if (end + length > byteLimit) break;
        if (!isWordCharacter(scalar)) wordEnd = end;
        end += length;
    }
    return text.substr(0, wordEnd > 0 ? wordEnd : end);
}

}  // namespace tesserine
