#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

using Bytes = std::vector<std::uint8_t>;

/// The bytes of `text`, without a copy.
std::span<const std::uint8_t> bytesOf(std::string_view text);
/// The bytes as text, without a copy and without any check.
std::string_view textOf(std::span<const std::uint8_t> bytes);

/// Two lower-case hexadecimal digits for each byte.
std::string hex(std::span<const std::uint8_t> bytes);
/// Either case; an odd length or any other character is none.
std::optional<Bytes> fromHex(std::string_view text);

/// Standard alphabet with padding (RFC 4648, section 4).
std::string base64(std::span<const std::uint8_t> bytes);
/// Strict: no white space, correct padding, no stray bits; anything else is none.
std::optional<Bytes> fromBase64(std::string_view text);

}  // namespace tesserine
