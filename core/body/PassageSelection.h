#pragma once

#include "core/body/AttributedText.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// A stretch of a note being edited, in UTF-16 units.
struct PassageRange {
    std::size_t start = 0;
    std::size_t length = 0;

    std::size_t end() const { return start + length; }
};

/// Where `passage` (UTF-8) stands in a note being edited, without overlaps. Paragraphs and lines
/// are separated by line breaks, a no-break space counts as a space, and white space around the
/// passage does not count. Linear time for a passage that does not repeat itself.
std::vector<PassageRange> placesOf(const AttributedText& text, std::string_view passage);

/// Whether a stretch can be locked: it holds text, and nothing that is not text, such as a picture
/// or another locked passage, because only text can be sealed.
bool isLockable(const AttributedText& text, const PassageRange& range);

/// The plain text of a stretch (UTF-8), its paragraphs and lines separated by line breaks.
std::string plainText(const AttributedText& text, const PassageRange& range);

/// Puts one locked paragraph that holds `blob` in the place of a stretch that can be locked. A
/// paragraph of which only a part was locked is split.
void lockRange(AttributedText& text, const PassageRange& passage, std::string_view blob);

}  // namespace tesserine
