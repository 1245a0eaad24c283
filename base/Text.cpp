#include "base/Text.h"

#include "base/UTF8.h"

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/stringoptions.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <new>

namespace tesserine::text {
namespace {

/// Unicode's `White_Space` property above ASCII; a stable set.
bool isWhiteSpaceAboveASCII(char32_t scalar) {
    return scalar == 0x85 || scalar == 0xA0 || scalar == 0x1680
           || (scalar >= 0x2000 && scalar <= 0x200A) || scalar == 0x2028 || scalar == 0x2029
           || scalar == 0x202F || scalar == 0x205F || scalar == 0x3000;
}

bool isASCIIWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Length of the white space character at the front, or 0.
std::size_t leadingWhiteSpace(std::string_view text) {
    if (isASCIIWhiteSpace(text.front())) return 1;
    if (static_cast<unsigned char>(text.front()) < 0x80) return 0;
    const utf8::Scalar scalar = utf8::first(text);
    return isWhiteSpaceAboveASCII(scalar.value) ? scalar.length : 0;
}

/// Length of the white space character at the end, or 0.
std::size_t trailingWhiteSpace(std::string_view text) {
    if (isASCIIWhiteSpace(text.back())) return 1;
    if (static_cast<unsigned char>(text.back()) < 0x80) return 0;
    std::size_t start = text.size() - 1;
    while (start > 0 && (static_cast<unsigned char>(text[start]) & 0xC0) == 0x80) {
        --start;
    }
    const utf8::Scalar scalar = utf8::first(text.substr(start));
    return isWhiteSpaceAboveASCII(scalar.value) ? scalar.length : 0;
}

std::size_t lengthUntilWhiteSpace(std::string_view text) {
    std::size_t length = 0;
    while (length < text.size() && leadingWhiteSpace(text.substr(length)) == 0) {
        length += utf8::first(text.substr(length)).length;
    }
    return length;
}

icu::StringPiece piece(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

/// ICU's functions used here fail for want of memory only.
void require(UErrorCode status) {
    if (U_FAILURE(status)) throw std::bad_alloc();
}

icu::UnicodeString withoutNonspacingMarks(const icu::UnicodeString& decomposed) {
    icu::UnicodeString kept;
    for (std::int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
        const UChar32 scalar = decomposed.char32At(i);
        if (u_charType(scalar) != U_NON_SPACING_MARK) kept.append(scalar);
    }
    return kept;
}

}  // namespace

std::string sanitized(std::string bytes) {
    std::size_t clean = utf8::cleanPrefix(bytes);
    if (clean == bytes.size()) return bytes;

    std::string result;
    result.reserve(bytes.size());
    std::string_view rest = bytes;
    while (!rest.empty()) {
        result.append(rest.substr(0, clean));
        rest.remove_prefix(clean);
        if (rest.empty()) break;

        const bool isNul = rest.front() == '\0';
        if (!isNul) utf8::append(result, 0xFFFD);
        rest.remove_prefix(isNul ? 1 : utf8::badPrefix(rest));
        clean = utf8::cleanPrefix(rest);
    }
    return result;
}

bool isClean(std::string_view bytes) { return utf8::cleanPrefix(bytes) == bytes.size(); }

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = leadingWhiteSpace(text);
        if (length == 0) break;
        text.remove_prefix(length);
    }
    while (!text.empty()) {
        const std::size_t length = trailingWhiteSpace(text);
        if (length == 0) break;
        text.remove_suffix(length);
    }
    return text;
}

bool isBlank(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = leadingWhiteSpace(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

std::vector<std::string_view> words(std::string_view text) {
    std::vector<std::string_view> found;
    for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
        found.push_back(text.substr(0, lengthUntilWhiteSpace(text)));
        text.remove_prefix(found.back().size());
    }
    return found;
}

std::string collapsed(std::string_view text) {
    std::string result;
    for (const std::string_view word : words(text)) {
        if (!result.empty()) result += ' ';
        result += word;
    }
    return result;
}

std::string joined(std::span<const std::string> parts, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) result += separator;
        result += parts[i];
    }
    return result;
}

std::string caseFolded(std::string_view text) {
    if (utf8::isASCII(text)) return asciiLowercased(text);
    std::string folded;
    folded.reserve(text.size());
    icu::StringByteSink<std::string> sink(&folded);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8Fold(U_FOLD_CASE_DEFAULT, piece(text), sink, nullptr, status);
    require(status);
    return folded;
}

std::string folded(std::string_view text) {
    if (utf8::isASCII(text)) return asciiLowercased(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const decomposer = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* const composer = icu::Normalizer2::getNFCInstance(status);
    require(status);

    // Decomposing first takes the dot off İ, which folding alone would leave behind the i.
    const auto decomposed =
        decomposer->normalize(icu::UnicodeString::fromUTF8(piece(text)), status);
    icu::UnicodeString bare = withoutNonspacingMarks(decomposed);
    const auto composedText = composer->normalize(bare.foldCase(), status);
    require(status);
    std::string result;
    return composedText.toUTF8String(result);
}

std::string withoutMarks(std::string_view text) {
    if (utf8::isASCII(text)) return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const decomposer = icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2* const composer = icu::Normalizer2::getNFCInstance(status);
    require(status);
    const auto decomposed =
        decomposer->normalize(icu::UnicodeString::fromUTF8(piece(text)), status);
    const auto bare = composer->normalize(withoutNonspacingMarks(decomposed), status);
    require(status);
    std::string result;
    return bare.toUTF8String(result);
}

std::string lowercased(std::string_view text) {
    if (utf8::isASCII(text)) return asciiLowercased(text);
    std::string lower;
    lower.reserve(text.size());
    icu::StringByteSink<std::string> sink(&lower);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, piece(text), sink, nullptr, status);
    require(status);
    return lower;
}

std::string asciiLowercased(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    }
    return lower;
}

std::string composed(std::string_view text) {
    if (utf8::isASCII(text)) return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const composer = icu::Normalizer2::getNFCInstance(status);
    require(status);
    std::string result;
    result.reserve(text.size());
    icu::StringByteSink<std::string> sink(&result);
    composer->normalizeUTF8(0, piece(text), sink, nullptr, status);
    require(status);
    return result;
}

std::size_t utf16Length(std::string_view text) {
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // One unit for each scalar, a second one for those of four bytes.
        units += static_cast<std::size_t>((byte & 0xC0) != 0x80);
        units += static_cast<std::size_t>(byte >= 0xF0);
    }
    return units;
}

std::u16string toUTF16(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const utf8::Scalar scalar = utf8::first(text);
        text.remove_prefix(scalar.length);
        if (scalar.value < 0x10000) {
            units.push_back(static_cast<char16_t>(scalar.value));
        } else {
            units.push_back(static_cast<char16_t>(0xD7C0 + (scalar.value >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + (scalar.value & 0x3FF)));
        }
    }
    return units;
}

std::string fromUTF16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        const bool isHigh = unit >= 0xD800 && unit < 0xDC00;
        const bool isLow = unit >= 0xDC00 && unit < 0xE000;
        const bool isPair = isHigh && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
        if (isPair) {
            const char32_t low = text[++i];
            utf8::append(bytes, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
        } else {
            utf8::append(bytes, isHigh || isLow ? 0xFFFD : unit);
        }
    }
    return bytes;
}

}  // namespace tesserine::text
