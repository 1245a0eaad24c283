#pragma once

#include <cstddef>
#include <cstdint>

namespace tesserine::bench {

/// Numbers that are the same for the same seed on every machine (SplitMix64). A value: copy it to
/// throw the same again.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}
    /// Dice of their own for one of many things made from one seed.
    Dice(std::uint64_t seed, std::uint64_t number) : Dice(seed ^ Dice(number).next()) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }
    /// A number below `bound`, which is above zero.
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }
    /// A number from `low` to `high`, both included.
    std::size_t between(std::size_t low, std::size_t high) { return low + below(high - low + 1); }
    /// True in `permille` of 1,000 throws.
    bool chance(std::size_t permille) { return below(1000) < permille; }

private:
    std::uint64_t state_;
};

}  // namespace tesserine::bench
