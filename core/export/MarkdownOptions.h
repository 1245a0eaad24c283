#pragma once

#include "core/export/AddressMap.h"

#include <functional>
#include <string>

namespace tesserine {

/// How a body becomes Markdown.
struct MarkdownOptions {
    /// Levels that headings move down, none beyond the sixth.
    int headingShift = 0;
    /// With it, files in the text become links as well.
    AddressMap addressOf;
    /// Reads Markdown as a stored body. With it nothing is lost on the way: what would be read back
    /// in another way stays HTML.
    std::function<std::string(const std::string& markdown)> readBack;
};

}  // namespace tesserine
