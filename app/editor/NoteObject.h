#pragma once

#include "base/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine::app {

/// A cell of a table that is an object.
struct CellPlace {
    int row = 0;
    int column = 0;
};

/// What one object in a note, a U+FFFC, stands for.
struct NoteObject {
    enum class Kind : std::uint8_t {
        picture,  ///< `attachment`, else `source`
        file,     ///< `attachment`
        locked,   ///< `source` is the blob
        block,    ///< HTML that is drawn as it is, such as a table
        other,    ///< something small in a line that shows nothing
    };

    Kind kind = Kind::other;
    std::optional<Uuid> attachment{};
    std::string source{};
    std::string label{};  ///< alternative text, or the name of a file
    int width = 0;        ///< in pixels as the note says; 0 when it says nothing
    int height = 0;

    /// `html` is the canonical HTML of one object.
    static NoteObject of(std::string_view html);
};

/// The HTML of a picture with another width; its height follows from its proportions.
std::string withPictureWidth(std::string_view html, int width);

}  // namespace tesserine::app
