#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace tesserine {

/// Width and height of a picture, in pixels.
struct ImageSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The size that the header of a PNG, JPEG, GIF, WebP or BMP file tells, without decoding the
/// picture. None for other files, damaged headers and sizes of 0. Reads at most the headers: time
/// is bounded by the number of a JPEG's segments.
std::optional<ImageSize> imageSize(std::span<const std::uint8_t> bytes);

}  // namespace tesserine
