#pragma once

#include <cstdint>

namespace tesserine {

/// What a paragraph is, in a note being edited.
struct BlockStyle {
    enum class Kind : std::uint8_t {
        heading,
        codeBlock,
        bullet,
        numbered,
        checklist,
        preserved,  ///< HTML that the editor cannot edit and keeps as it is
        encrypted,
        paragraph,
        quote,
        divider,
    };

    Kind kind = Kind::paragraph;
    int level = 0;  ///< of a heading: 1 to 6

    friend bool operator==(const BlockStyle&, const BlockStyle&) = default;
};

}  // namespace tesserine
