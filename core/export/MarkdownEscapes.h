#pragma once

#include <string>
#include <string_view>

/// Writes texts so that a reader of Markdown takes them for texts.
namespace tesserine::markdown {

/// Where a text stands, as far as it decides what would be markup there.
struct TextPlace {
    bool isLineStart = false;     ///< first of its line
    bool isAfterBreak = false;    ///< of a line that another one of the same paragraph precedes
    bool isCell = false;          ///< of a table
    bool hasTildes = false;       ///< at least two "~" stand in the same paragraph
    bool hidesAddresses = false;  ///< bare addresses must not become links
};

/// Appends `text` with a backslash before what would begin markup.
void appendEscaped(std::string& output, std::string_view text, const TextPlace& place);

/// `text` between backquotes; not empty and without line breaks.
std::string codeSpan(std::string_view text);

/// "(address)" or "(address "title")".
std::string destination(std::string_view address, std::string_view title, bool isCell);

/// `html` on a line of its own: line breaks in it become references.
std::string onOneLine(std::string_view html);

/// The length of the longest run of `character` in `text`.
std::size_t longestRun(std::string_view text, char character);

}  // namespace tesserine::markdown
