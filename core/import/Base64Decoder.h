#pragma once

#include "base/Encoding.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace tesserine {

/// Decodes base64 (RFC 4648, section 4) that arrives in pieces of any size, with white space
/// anywhere. Linear; keeps three characters between the pieces.
class Base64Decoder {
public:
    /// Appends the bytes that `piece` completes. After something that is no base64 nothing more is
    /// decoded.
    void decode(std::string_view piece, Bytes& bytes);
    /// Whether all pieces together were base64 with its end; the object starts afresh afterwards.
    bool finish();

private:
    static std::size_t decodeGroups(std::string_view piece, Bytes& bytes);
    void takeCharacter(char character, Bytes& bytes);
    void takeGroup(Bytes& bytes);

    std::array<std::uint8_t, 4> group_{};
    std::size_t groupSize_ = 0;
    std::size_t padding_ = 0;  // "=" in the group
    bool hasEnded_ = false;    // a group with padding was decoded
    bool isDamaged_ = false;
};

}  // namespace tesserine
