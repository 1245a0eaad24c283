#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tesserine {

class Random;

/// A 16-byte identifier (RFC 9562). Compare values, never their texts: the texts differ by case.
class Uuid {
public:
    static constexpr std::size_t byteCount = 16;

    /// The nil identifier, all bytes zero.
    constexpr Uuid() = default;
    explicit constexpr Uuid(const std::array<std::uint8_t, byteCount>& bytes) : bytes_(bytes) {}

    /// A new random identifier (version 4).
    static Uuid random(Random& random);
    /// Reads the 36-character form with hyphens, in either case; nothing else is one.
    static std::optional<Uuid> parse(std::string_view text);
    /// Exactly 16 bytes; any other length is none.
    static std::optional<Uuid> fromBytes(std::span<const std::uint8_t> bytes);

    /// Canonical text: upper case with hyphens. Used in the library, in links and in exports.
    std::string text() const;
    /// The form that goes over the wire: lower case with hyphens.
    std::string wireText() const;

    const std::array<std::uint8_t, byteCount>& bytes() const noexcept { return bytes_; }
    bool isNil() const noexcept { return *this == Uuid{}; }

    // NOLINTNEXTLINE(modernize-use-nullptr): the tool misreads a defaulted comparison
    friend constexpr auto operator<=>(const Uuid&, const Uuid&) = default;

private:
    std::array<std::uint8_t, byteCount> bytes_{};
};

}  // namespace tesserine

template <>
struct std::hash<tesserine::Uuid> {
    std::size_t operator()(const tesserine::Uuid& uuid) const noexcept;
};
