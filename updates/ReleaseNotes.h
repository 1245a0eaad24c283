#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// The text of release notes in pieces that can be shown as paragraphs and bulleted lines.
struct ReleaseNotes {
    struct Block {
        enum class Kind { paragraph, bullet };
        Kind kind = Kind::paragraph;
        std::string text;

        friend bool operator==(const Block&, const Block&) = default;
    };
    std::vector<Block> blocks;

    /// A line that begins with "- ", "* " or "• " is a bullet. Other lines join to paragraphs,
    /// which end at a blank line or a bullet.
    static ReleaseNotes parse(std::string_view text);
};

}  // namespace tesserine
