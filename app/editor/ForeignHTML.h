#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tesserine::app::paste {

/// HTML of another program, with what it says in its own ways said in plain elements.
struct PlainHTML {
    std::string html{};
    std::size_t unreachablePictures = 0;  ///< that only the other program can show
};
/// Words that are bold, slanted, struck or marked by a style get elements for it, and elements that
/// are not meant so go. Paragraphs that a word processor means as items become lists, tables that
/// only arrange a page its paragraphs. What belongs to the other page goes as well: colours,
/// addresses within it, pixels that tell who reads, hidden text, line breaks that end a paragraph.
/// Linear in the size, never fails.
PlainHTML plainHTML(std::string_view foreign);

}  // namespace tesserine::app::paste
