#pragma once

#include "core/body/HTMLNode.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// The text of a note body, for previews, titles and search. Characters are extended grapheme
/// clusters.
class PlainText {
public:
    /// The text of HTML as it is read, nothing sanitised.
    static std::string fromHTML(std::string_view html);
    /// The text of a tree: blocks on lines of their own, cells ending in tabs, items behind "• ",
    /// "[ ] " or "[x] ", at most one empty line in a row and none at the end.
    static std::string fromNode(const HTMLNode& node);
    /// The first line of `text` that is not blank, trimmed and then cut to at most `limit`
    /// characters; a view into `text`.
    static std::optional<std::string_view> firstLine(std::string_view text, std::size_t limit);
    /// The beginning of `text` on one line of at most `limit` characters, white space collapsed.
    /// Looks at the first max(512, 8 × `limit`) characters only.
    static std::string snippet(std::string_view text, std::size_t limit);
};

/// What lists, links and exports call a note: its trimmed title, else the first line of its text,
/// of at most 120 characters, else "Untitled".
std::string displayTitle(std::string_view title, std::string_view plainText);

}  // namespace tesserine
