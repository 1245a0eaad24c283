#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tesserine {

/// `wordLimit` words around the first one in `text` that `expression`, of FTS5, looks for, which
/// are marked; from the beginning when there is none. For texts in which SQLite, whose time grows
/// with the square of what it marks, would look for too long.
std::string longTextExcerpt(
    std::string_view text, std::string_view expression, std::size_t wordLimit);

}  // namespace tesserine
