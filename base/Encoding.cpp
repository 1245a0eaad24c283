#include "base/Encoding.h"

namespace tesserine {
namespace {

constexpr std::string_view base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t notInAlphabet = 0xFF;

constexpr std::array<std::uint8_t, 256> base64Values = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(notInAlphabet);
    for (std::size_t i = 0; i < base64Alphabet.size(); ++i) {
        values[static_cast<std::uint8_t>(base64Alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();
static_assert(base64Values['/'] == 63 && base64Values['='] == notInAlphabet);

std::uint8_t base64Value(char c) { return base64Values[static_cast<std::uint8_t>(c)]; }

constexpr std::array<std::uint8_t, 256> hexValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(notInAlphabet);
    for (std::uint8_t i = 0; i < 10; ++i) {
        values['0' + i] = i;
    }
    for (std::uint8_t i = 0; i < 6; ++i) {
        values['a' + i] = static_cast<std::uint8_t>(10 + i);
        values['A' + i] = static_cast<std::uint8_t>(10 + i);
    }
    return values;
}();

/// Decodes the last one or two characters before the padding; stray bits are refused.
bool appendPartialGroup(Bytes& bytes, std::string_view group) {
    const std::uint8_t first = base64Value(group[0]);
    const std::uint8_t second = base64Value(group[1]);
    if (first == notInAlphabet || second == notInAlphabet) return false;
    bytes.push_back(static_cast<std::uint8_t>(first << 2 | second >> 4));
    if (group[2] == '=') return (second & 0x0F) == 0;

    const std::uint8_t third = base64Value(group[2]);
    if (third == notInAlphabet) return false;
    bytes.push_back(static_cast<std::uint8_t>((second & 0x0F) << 4 | third >> 2));
    return (third & 0x03) == 0;
}

}  // namespace

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string_view textOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string hex(std::span<const std::uint8_t> bytes) {
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 0x0F]);
    }
    return text;
}

std::optional<Bytes> fromHex(std::string_view text) {
    if (text.size() % 2 != 0) return std::nullopt;
    Bytes bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const std::uint8_t high = hexValues[static_cast<std::uint8_t>(text[i])];
        const std::uint8_t low = hexValues[static_cast<std::uint8_t>(text[i + 1])];
        if (high == notInAlphabet || low == notInAlphabet) return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    return bytes;
}

std::string base64(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        text.push_back(base64Alphabet[bytes[i] >> 2]);
        text.push_back(base64Alphabet[(bytes[i] & 0x03) << 4 | bytes[i + 1] >> 4]);
        text.push_back(base64Alphabet[(bytes[i + 1] & 0x0F) << 2 | bytes[i + 2] >> 6]);
        text.push_back(base64Alphabet[bytes[i + 2] & 0x3F]);
    }
    const std::size_t left = bytes.size() - i;
    if (left == 0) return text;

    const std::uint8_t second = left == 2 ? bytes[i + 1] : std::uint8_t{0};
    text.push_back(base64Alphabet[bytes[i] >> 2]);
    text.push_back(base64Alphabet[(bytes[i] & 0x03) << 4 | second >> 4]);
    text.push_back(left == 2 ? base64Alphabet[(second & 0x0F) << 2] : '=');
    text.push_back('=');
    return text;
}

std::optional<Bytes> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    Bytes bytes;
    if (text.empty()) return bytes;

    bytes.reserve(text.size() / 4 * 3);
    const bool isPadded = text.back() == '=';
    const std::size_t whole = text.size() - (isPadded ? 4 : 0);
    for (std::size_t i = 0; i < whole; i += 4) {
        const std::uint8_t a = base64Value(text[i]);
        const std::uint8_t b = base64Value(text[i + 1]);
        const std::uint8_t c = base64Value(text[i + 2]);
        const std::uint8_t d = base64Value(text[i + 3]);
        if (((a | b | c | d) & 0xC0) != 0) return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(a << 2 | b >> 4));
        bytes.push_back(static_cast<std::uint8_t>((b & 0x0F) << 4 | c >> 2));
        bytes.push_back(static_cast<std::uint8_t>((c & 0x03) << 6 | d));
    }
    if (isPadded && !appendPartialGroup(bytes, text.substr(whole))) return std::nullopt;
    return bytes;
}

}  // namespace tesserine
