#pragma once

#include "base/Encoding.h"
#include "base/SecretBytes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

/// Encryption under a key or a passphrase; the only place that meets the cipher library.
namespace tesserine::cipher {

inline constexpr std::size_t keySize = 32;
inline constexpr std::size_t nonceSize = 12;
inline constexpr std::size_t tagSize = 16;

/// The cipher library refused its work, for want of memory for instance.
class Error final : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A key of `keySize` bytes by PBKDF2 with HMAC-SHA256 (RFC 8018, section 5.2). Takes about 0.1 s
/// for 210,000 rounds. `passphrase` is used byte for byte. Throws `Error`.
SecretBytes deriveKey(
    std::string_view passphrase, std::span<const std::uint8_t> salt, int roundCount);

/// Seals `plain` with AES-256-GCM (NIST SP 800-38D) and no additional data: nonce, ciphertext (as
/// long as `plain`) and tag behind one another. `nonce` has `nonceSize` bytes and is never used
/// twice with one key. Throws `Error`.
Bytes seal(
    const SecretBytes& key,
    std::span<const std::uint8_t> nonce,
    std::span<const std::uint8_t> plain);

/// Opens what `seal` made. None when it is too short, was changed, or was sealed with another key.
/// Throws `Error`.
std::optional<SecretBytes> open(const SecretBytes& key, std::span<const std::uint8_t> sealed);

}  // namespace tesserine::cipher
