#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// One key of a front matter, with its value or values as text.
struct FrontMatterField {
    std::string key;
    std::vector<std::string> values;  ///< one for a scalar; none for an empty value
    bool isList = false;

    /// The values as one text, separated by ", ".
    std::string text() const;
};

/// The keys at the head of a Markdown file, between two lines of "---".
struct FrontMatter {
    std::vector<FrontMatterField> fields;  ///< in the order of the file, each key once
    std::size_t end = 0;                   ///< where the text after it begins

    const FrontMatterField* field(std::string_view key) const;
};

/// Reads the front matter that `text` (lines ending in "\n") begins with; none when it begins with
/// something else, such as a thematic break.
///
/// A subset of YAML 1.2 is understood: plain, single- and double-quoted scalars, block scalars
/// ("|" and ">"), lists in either form, comments. What is nested deeper is kept as its source text.
/// Of equal keys the last one counts. Linear.
std::optional<FrontMatter> parseFrontMatter(std::string_view text);

}  // namespace tesserine
