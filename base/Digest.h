#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace tesserine {

using SHA256Digest = std::array<std::uint8_t, 32>;

/// SHA-256 (FIPS 180-4) of bytes that arrive in pieces.
class SHA256 {
public:
    SHA256();
    SHA256(SHA256&&) noexcept;
    SHA256& operator=(SHA256&&) noexcept;
    SHA256(const SHA256&) = delete;
    SHA256& operator=(const SHA256&) = delete;
    ~SHA256();

    void update(std::span<const std::uint8_t> bytes);
    /// The digest; the object starts afresh afterwards.
    SHA256Digest finish();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

SHA256Digest sha256(std::span<const std::uint8_t> bytes);
/// 64 lower-case hexadecimal characters.
std::string sha256Hex(std::span<const std::uint8_t> bytes);
/// The digest of a file, read in pieces of 1 MiB. Throws `FileError`.
std::string sha256HexOfFile(const std::filesystem::path& file);

}  // namespace tesserine
