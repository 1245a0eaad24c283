#pragma once

#include "base/Random.h"

#include <cstdint>
#include <mutex>
#include <span>

namespace tesserine::test {

/// The same bytes for the same seed on every machine. Lives with the tests, so that no program can
/// be linked with it by mistake.
class SeededRandom final : public Random {
public:
    explicit SeededRandom(std::uint64_t seed) : state_(seed) {}

    void fill(std::span<std::uint8_t> bytes) override {
        const std::lock_guard lock(mutex_);
        for (std::uint8_t& byte : bytes) {
            if (bytesLeft_ == 0) draw();
            byte = static_cast<std::uint8_t>(drawn_);
            drawn_ >>= 8;
            --bytesLeft_;
        }
    }

private:
    /// SplitMix64.
    void draw() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        drawn_ = mixed ^ (mixed >> 31);
        bytesLeft_ = 8;
    }

    std::mutex mutex_;
    // Behind mutex_.
    std::uint64_t state_;
    std::uint64_t drawn_ = 0;
    int bytesLeft_ = 0;
};

}  // namespace tesserine::test
