#include "core/import/Base64Decoder.h"

#include <utility>

namespace tesserine {
namespace {

constexpr std::uint8_t space = 64;
constexpr std::uint8_t padding = 65;
constexpr std::uint8_t foreign = 66;

/// What each byte stands for: 0 to 63, or one of the three above.
constexpr auto values = [] {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> table{};
    table.fill(foreign);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    for (const char c : {' ', '\t', '\r', '\n'}) {
        table[static_cast<std::uint8_t>(c)] = space;
    }
    table[static_cast<std::uint8_t>('=')] = padding;
    return table;
}();

std::uint8_t valueOf(char c) { return values[static_cast<std::uint8_t>(c)]; }

std::uint8_t lowByte(unsigned bits) { return static_cast<std::uint8_t>(bits & 0xFFU); }

}  // namespace

void Base64Decoder::decode(std::string_view piece, Bytes& bytes) {
    while (!piece.empty() && !isDamaged_) {
        if (groupSize_ == 0 && !hasEnded_) piece.remove_prefix(decodeGroups(piece, bytes));
        if (piece.empty()) return;
        takeCharacter(piece.front(), bytes);
        piece.remove_prefix(1);
    }
}

/// Decodes the groups of four characters of the alphabet at the front, as nearly all of them stand;
/// tells how many characters that were.
std::size_t Base64Decoder::decodeGroups(std::string_view piece, Bytes& bytes) {
    const std::size_t before = bytes.size();
    bytes.resize(before + piece.size() / 4 * 3);
    std::uint8_t* target = bytes.data() + before;
    std::size_t done = 0;
    for (; done + 4 <= piece.size(); done += 4) {
        const unsigned a = valueOf(piece[done]);
        const unsigned b = valueOf(piece[done + 1]);
        const unsigned c = valueOf(piece[done + 2]);
        const unsigned d = valueOf(piece[done + 3]);
        if ((a | b | c | d) >= space) break;
        const unsigned bits = a << 18U | b << 12U | c << 6U | d;
        *target++ = lowByte(bits >> 16U);
        *target++ = lowByte(bits >> 8U);
        *target++ = lowByte(bits);
    }
    bytes.resize(before + done / 4 * 3);
    return done;
}

void Base64Decoder::takeCharacter(char character, Bytes& bytes) {
    const std::uint8_t value = valueOf(character);
    if (value == space) return;
    const bool isMisplaced = value == padding ? groupSize_ < 2 : padding_ > 0;
    isDamaged_ = value == foreign || hasEnded_ || isMisplaced;
    if (isDamaged_) return;
    if (value == padding) ++padding_;
    group_[groupSize_++] = value == padding ? 0 : value;
    if (groupSize_ == group_.size()) takeGroup(bytes);
}

void Base64Decoder::takeGroup(Bytes& bytes) {
    const unsigned bits = static_cast<unsigned>(group_[0]) << 18U
                          | static_cast<unsigned>(group_[1]) << 12U
                          | static_cast<unsigned>(group_[2]) << 6U | group_[3];
    bytes.push_back(lowByte(bits >> 16U));
    if (padding_ < 2) bytes.push_back(lowByte(bits >> 8U));
    if (padding_ < 1) bytes.push_back(lowByte(bits));
    hasEnded_ = padding_ > 0;
    groupSize_ = 0;
    padding_ = 0;
}

bool Base64Decoder::finish() {
    const bool isWhole = !isDamaged_ && groupSize_ == 0;
    *this = {};
    return isWhole;
}

}  // namespace tesserine
