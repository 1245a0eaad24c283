#pragma once

#include "base/Regex.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Writes the running text of Markdown blocks as HTML, and finds in it what MD4C does not know:
/// `==marked==` text, `![[embedded]]` files, `#tag` words, and raw-text elements without an end.
///
/// What turns out only later, such as that a "==" has a partner, is mended when the block is over.
class InlineText {
public:
    /// `source` is the whole Markdown text; the pieces given to `write` are views into it.
    InlineText(std::string_view source, bool recognisesTags)
        : source_(source), recognisesTags_(recognisesTags) {}

    /// Appends a piece of plain text, with references for "&", "<" and ">". Tells whether it held
    /// an embedded file. Inside of links only marks are looked for.
    bool write(std::string& html, std::string_view text, bool isInLink);
    /// Appends one tag of raw HTML.
    void writeTag(std::string& html, std::string_view tag);

    void enterSpan() { ++spanDepth_; }
    void leaveSpan();
    /// The running text is over: a block begins or ends here.
    void finish(std::string& html);

    std::vector<std::string> takeTags() { return std::move(tags_); }

private:
    struct OpenMark {
        std::size_t position;
        std::size_t spanDepth;
    };
    struct Mending {
        std::size_t position;
        std::size_t length;
        std::string_view replacement;
    };
    struct OpenElement {
        std::size_t position;
        std::string name;
    };

    char before(std::string_view text, std::size_t index) const;
    char after(std::string_view text, std::size_t index) const;
    bool isMark(std::string_view text, std::size_t index) const;
    void writeMark(std::string& html, std::string_view text, std::size_t index);
    std::size_t writeEmbed(std::string& html, std::string_view text, std::size_t index) const;
    void collectTags(std::string_view text);

    std::string_view source_;
    bool recognisesTags_;
    std::size_t spanDepth_ = 0;
    std::vector<OpenMark> marks_;
    std::optional<OpenElement> rawText_;
    std::vector<Mending> mendings_;
    std::vector<std::string> tags_;
};

}  // namespace tesserine
