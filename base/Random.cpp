#include "base/Random.h"

#include <sys/random.h>

#include <array>
#include <cassert>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

namespace tesserine {

std::uint64_t Random::below(std::uint64_t bound) {
    assert(bound > 0 && "a number below zero does not exist");
    // Draws from the last, incomplete span of `bound` numbers would favour the small ones.
    const std::uint64_t excess = (std::numeric_limits<std::uint64_t>::max() % bound + 1) % bound;
    const std::uint64_t last = std::numeric_limits<std::uint64_t>::max() - excess;
    std::uint64_t drawn = 0;
    do {
        std::array<std::uint8_t, sizeof drawn> bytes{};
        fill(bytes);
        std::memcpy(&drawn, bytes.data(), bytes.size());
    } while (drawn > last);
    return drawn % bound;
}

void SecureRandom::fill(std::span<std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::getrandom(bytes.data(), bytes.size(), 0);
        if (count >= 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "getrandom");
        }
    }
}

}  // namespace tesserine
