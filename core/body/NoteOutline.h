#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tesserine {

struct AttributedText;

/// One heading of a note being edited.
struct OutlineEntry {
    int level = 0;             ///< 1 to 6
    std::string text;          ///< trimmed, never empty
    std::size_t location = 0;  ///< where its paragraph starts, in UTF-16 units

    friend bool operator==(const OutlineEntry&, const OutlineEntry&) = default;
};

class NoteOutline {
public:
    /// The headings of `edited` in order; those without text are left out. Linear time.
    static std::vector<OutlineEntry> entries(const AttributedText& edited);
};

}  // namespace tesserine
