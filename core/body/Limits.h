#pragma once

#include <cstddef>

namespace tesserine::limits {

/// The largest stored body, in bytes of its canonical HTML.
inline constexpr std::size_t canonicalBodyBytes = 10'000'000;

}  // namespace tesserine::limits
