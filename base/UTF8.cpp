#include "base/UTF8.h"

#include <cstring>

namespace tesserine::utf8 {
namespace {

constexpr std::uint64_t highBits = 0x8080808080808080U;
constexpr std::uint64_t lowBits = 0x0101010101010101U;

std::uint64_t eightBytes(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Whether one of eight bytes below 0x80 is zero.
bool hasZero(std::uint64_t asciiWord) { return ((asciiWord - lowBits) & highBits) != 0; }

std::uint8_t byteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

bool isContinuation(std::uint8_t byte) { return (byte & 0xC0) == 0x80; }

/// What must follow a lead byte: how many bytes in all, and the range of the second.
struct Form {
    std::size_t length = 0;  // 0: no lead byte
    std::uint8_t secondLeast = 0x80;
    std::uint8_t secondGreatest = 0xBF;
};

Form formOf(std::uint8_t lead) {
    if (lead < 0x80) return {.length = 1};
    if (lead < 0xC2) return {};
    if (lead < 0xE0) return {.length = 2};
    if (lead == 0xE0) return {.length = 3, .secondLeast = 0xA0};     // no longer form than needed
    if (lead == 0xED) return {.length = 3, .secondGreatest = 0x9F};  // no surrogates
    if (lead < 0xF0) return {.length = 3};
    if (lead == 0xF0) return {.length = 4, .secondLeast = 0x90};
    if (lead < 0xF4) return {.length = 4};
    if (lead == 0xF4) return {.length = 4, .secondGreatest = 0x8F};  // up to U+10FFFF
    return {};
}

/// How many bytes at the front agree with `form`.
std::size_t matching(std::string_view bytes, const Form& form) {
    if (form.length < 2 || bytes.size() < 2) return form.length == 0 ? 0 : 1;
    const std::uint8_t second = byteAt(bytes, 1);
    if (second < form.secondLeast || second > form.secondGreatest) return 1;

    std::size_t count = 2;
    while (count < form.length && count < bytes.size() && isContinuation(byteAt(bytes, count))) {
        ++count;
    }
    return count;
}

}  // namespace

std::size_t cleanPrefix(std::string_view bytes) {
    std::size_t place = 0;
    while (place < bytes.size()) {
        while (place + 8 <= bytes.size()) {
            const std::uint64_t word = eightBytes(bytes.data() + place);
            if ((word & highBits) != 0 || hasZero(word)) break;
            place += 8;
        }
        if (place == bytes.size() || bytes[place] == '\0') return place;

        const std::string_view rest = bytes.substr(place);
        const Form form = formOf(byteAt(rest, 0));
        if (form.length == 0 || matching(rest, form) != form.length) return place;
        place += form.length;
    }
    return place;
}

Scalar first(std::string_view text) {
    const std::uint8_t lead = byteAt(text, 0);
    if (lead < 0x80) return {.value = lead, .length = 1};
    const auto following = [&](std::size_t index) {
        return static_cast<char32_t>(byteAt(text, index) & 0x3F);
    };
    if (lead < 0xE0) {
        return {.value = static_cast<char32_t>(lead & 0x1F) << 6 | following(1), .length = 2};
    }
    if (lead < 0xF0) {
        const char32_t top = static_cast<char32_t>(lead & 0x0F) << 12;
        return {.value = top | following(1) << 6 | following(2), .length = 3};
    }
    const char32_t top = static_cast<char32_t>(lead & 0x07) << 18;
    return {.value = top | following(1) << 12 | following(2) << 6 | following(3), .length = 4};
}

std::size_t badPrefix(std::string_view bytes) {
    const Form form = formOf(byteAt(bytes, 0));
    if (form.length == 0) return 1;
    const std::size_t count = matching(bytes, form);
    return count == form.length ? 0 : count;
}

void append(std::string& text, char32_t scalar) {
    const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (scalar < 0x80) {
        put(scalar);
    } else if (scalar < 0x800) {
        put(0xC0 | scalar >> 6);
        put(0x80 | (scalar & 0x3F));
    } else if (scalar < 0x10000) {
        put(0xE0 | scalar >> 12);
        put(0x80 | (scalar >> 6 & 0x3F));
        put(0x80 | (scalar & 0x3F));
    } else {
        put(0xF0 | scalar >> 18);
        put(0x80 | (scalar >> 12 & 0x3F));
        put(0x80 | (scalar >> 6 & 0x3F));
        put(0x80 | (scalar & 0x3F));
    }
}

bool isASCII(std::string_view bytes) {
    std::size_t place = 0;
    for (; place + 8 <= bytes.size(); place += 8) {
        if ((eightBytes(bytes.data() + place) & highBits) != 0) return false;
    }
    for (; place < bytes.size(); ++place) {
        if (byteAt(bytes, place) >= 0x80) return false;
    }
    return true;
}

}  // namespace tesserine::utf8
