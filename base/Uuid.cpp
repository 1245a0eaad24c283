#include "base/Uuid.h"

#include "base/Random.h"

#include <algorithm>
#include <cstring>

namespace tesserine {
namespace {

constexpr std::size_t textLength = 36;

constexpr bool isHyphenPlace(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string written(const std::array<std::uint8_t, Uuid::byteCount>& bytes, const char* digits) {
    std::string text(textLength, '-');
    std::size_t place = 0;
    for (const std::uint8_t byte : bytes) {
        if (isHyphenPlace(place)) ++place;
        text[place++] = digits[byte >> 4];
        text[place++] = digits[byte & 0x0F];
    }
    return text;
}

}  // namespace

Uuid Uuid::random(Random& random) {
    std::array<std::uint8_t, byteCount> bytes{};
    random.fill(bytes);
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // variant of RFC 9562
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != textLength) return std::nullopt;

    std::array<std::uint8_t, byteCount> bytes{};
    std::size_t place = 0;
    for (std::uint8_t& byte : bytes) {
        if (isHyphenPlace(place) && text[place++] != '-') return std::nullopt;
        const int high = digitValue(text[place]);
        const int low = digitValue(text[place + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        byte = static_cast<std::uint8_t>(high * 16 + low);
        place += 2;
    }
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::fromBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != byteCount) return std::nullopt;
    std::array<std::uint8_t, byteCount> copy{};
    std::ranges::copy(bytes, copy.begin());
    return Uuid(copy);
}

std::string Uuid::text() const { return written(bytes_, "0123456789ABCDEF"); }

std::string Uuid::wireText() const { return written(bytes_, "0123456789abcdef"); }

}  // namespace tesserine

std::size_t std::hash<tesserine::Uuid>::operator()(const tesserine::Uuid& uuid) const noexcept {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
    std::memcpy(&high, uuid.bytes().data(), sizeof high);
    std::memcpy(&low, uuid.bytes().data() + sizeof high, sizeof low);
    // Imported identifiers may count upwards instead of being random, so every bit is mixed into
    // the low ones, which choose the bucket (the finaliser of MurmurHash3).
    std::uint64_t mixed = high ^ (low << 7 | low >> 57);
    mixed ^= mixed >> 33;
    mixed *= 0xFF51AFD7ED558CCDU;
    mixed ^= mixed >> 33;
    mixed *= 0xC4CEB9FE1A85EC53U;
    mixed ^= mixed >> 33;
    return static_cast<std::size_t>(mixed);
}
