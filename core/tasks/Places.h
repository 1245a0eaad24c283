#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tesserine {

/// The `sortIndex` behind one that is taken. Another device may have written the largest number
/// there is; two things then share it and stand by age.
constexpr std::int64_t placeAfter(std::int64_t place) {
    return std::min(place, std::numeric_limits<std::int64_t>::max() - 1) + 1;
}

}  // namespace tesserine
