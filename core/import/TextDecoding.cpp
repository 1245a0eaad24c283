#include "core/import/TextDecoding.h"

#include "base/Encoding.h"
#include "base/Text.h"
#include "base/UTF8.h"

#include <array>
#include <string_view>

namespace tesserine {
namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view utf16LittleMark = "\xFF\xFE";
constexpr std::string_view utf16BigMark = "\xFE\xFF";

/// The characters of Windows-1252 from 0x80 to 0x9F; its five gaps are those of ISO 8859-1.
/// Source: https://encoding.spec.whatwg.org/#index-windows-1252
constexpr std::array<char16_t, 32> windows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::string fromWindows1252(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size());
    for (const char c : bytes) {
        units += windows1252Character(static_cast<std::uint8_t>(c));
    }
    return text::fromUTF16(units);
}

std::string fromUTF16(std::string_view bytes, bool isBigEndian) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<std::uint8_t>(bytes[i]);
        const auto second = static_cast<std::uint8_t>(bytes[i + 1]);
        const unsigned unit = isBigEndian ? first * 256U + second : second * 256U + first;
        units += static_cast<char16_t>(unit);
    }
    if (bytes.size() % 2 != 0) units += u'\uFFFD';
    return text::fromUTF16(units);
}

/// How many sequences of more than one byte are UTF-8, and how many are not.
struct SequenceCount {
    std::size_t good = 0;
    std::size_t bad = 0;
};

SequenceCount countSequences(std::string_view bytes) {
    SequenceCount count;
    while (!bytes.empty()) {
        const std::size_t bad = bytes.front() == '\0' ? 0 : utf8::badPrefix(bytes);
        if (bad > 0) {
            ++count.bad;
            bytes.remove_prefix(bad);
            continue;
        }
        const std::size_t length = bytes.front() == '\0' ? 1 : utf8::first(bytes).length;
        if (length > 1) ++count.good;
        bytes.remove_prefix(length);
    }
    return count;
}

/// CR LF and CR become LF.
void normaliseLineEnds(std::string& text) {
    if (text.find('\r') == std::string::npos) return;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isReturn = text[i] == '\r';
        if (isReturn && i + 1 < text.size() && text[i + 1] == '\n') continue;
        text[kept++] = isReturn ? '\n' : text[i];
    }
    text.resize(kept);
}

DecodedText decoded(std::string_view bytes) {
    if (bytes.starts_with(utf16LittleMark)) return {fromUTF16(bytes.substr(2), false), {}};
    if (bytes.starts_with(utf16BigMark)) return {fromUTF16(bytes.substr(2), true), {}};

    const bool hasMark = bytes.starts_with(utf8Mark);
    if (hasMark) bytes.remove_prefix(utf8Mark.size());
    if (text::isClean(bytes)) return {std::string(bytes), {}};

    const SequenceCount count = countSequences(bytes);
    if (count.bad == 0) {
        return {
            text::sanitized(std::string(bytes)), "Characters that no text holds were left out."};
    }
    if (hasMark || count.good > count.bad) {
        return {
            text::sanitized(std::string(bytes)),
            "Some bytes are no UTF-8 text and were replaced by “\uFFFD”."};
    }
    return {
        text::sanitized(fromWindows1252(bytes)),
        "The file is not UTF-8 and was read as Windows-1252; look at its accented letters."};
}

}  // namespace

DecodedText decodedText(std::span<const std::uint8_t> bytes) {
    DecodedText result = decoded(textOf(bytes));
    if (!text::isClean(result.text)) result.text = text::sanitized(std::move(result.text));
    normaliseLineEnds(result.text);
    return result;
}

char16_t windows1252Character(std::uint8_t byte) {
    const bool isMapped = byte >= 0x80 && byte < 0xA0;
    return isMapped ? windows1252[byte - 0x80U] : static_cast<char16_t>(byte);
}

}  // namespace tesserine
