#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The values of YAML that stand on one line.
namespace tesserine::yaml {

/// Walks over a text and tells of each character whether it stands inside quotation marks.
class QuoteWalk {
public:
    /// Whether the next character, `c`, stands outside of quotation marks and is none itself.
    bool isOutside(char c);

private:
    char quote_ = 0;
    char previous_ = ' ';
    bool isEscaped_ = false;
};

/// "key:" at the beginning of a line, and what follows the colon.
struct LeadingKey {
    std::string key;
    std::string_view rest;
};
/// None when the line is indented or has no key. A key may be quoted.
std::optional<LeadingKey> leadingKey(std::string_view line);

/// `text` up to a "#" that begins a comment outside quotation marks, trimmed.
std::string_view withoutComment(std::string_view text);

/// The value of a plain, 'single' or "double" quoted scalar; "~" and "null" are empty.
std::string scalar(std::string_view text);

/// Counts brackets outside of quotation marks, line after line.
class BracketCount {
public:
    void add(std::string_view line);
    /// Whether a bracket was opened that is not closed yet.
    bool areOpen() const { return depth_ > 0; }

private:
    QuoteWalk walk_;
    std::ptrdiff_t depth_ = 0;
};

/// The items of "[a, 'b', c]"; none when `text` is not such a list. Nested items keep their source.
std::optional<std::vector<std::string>> flowList(std::string_view text);

}  // namespace tesserine::yaml
