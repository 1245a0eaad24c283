#pragma once

#include <cstdint>
#include <span>

namespace tesserine {

/// A source of random bytes, handed to whoever needs identifiers, names or jitter.
class Random {
public:
    Random() = default;
    Random(const Random&) = delete;
    Random& operator=(const Random&) = delete;
    virtual ~Random() = default;

    /// Fills `bytes`. Safe to call from any thread.
    virtual void fill(std::span<std::uint8_t> bytes) = 0;

    /// A uniform number below `bound`, which is above zero.
    std::uint64_t below(std::uint64_t bound);
};

/// The kernel's cryptographic source, getrandom(2); fit for keys and nonces.
class SecureRandom final : public Random {
public:
    void fill(std::span<std::uint8_t> bytes) override;
};

}  // namespace tesserine
