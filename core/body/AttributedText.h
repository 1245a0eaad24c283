#pragma once

#include "core/body/BlockStyle.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// How a stretch of text looks inside its paragraph.
struct InlineStyle {
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruck = false;
    bool isCode = false;
    bool isHighlighted = false;
    bool isSubscript = false;
    bool isSuperscript = false;
    std::string color;       ///< "#rrggbb" or empty
    std::string background;  ///< "#rrggbb" or empty
    std::string link;        ///< address or empty
    std::string object;      ///< canonical HTML of what a U+FFFC stands for

    friend bool operator==(const InlineStyle&, const InlineStyle&) = default;
};

/// A note being edited: UTF-16 text whose paragraphs end in "\n", with a style for each paragraph
/// and for stretches of text. Lengths and offsets count UTF-16 units. Knows no user interface.
struct AttributedText {
    enum class Alignment : std::uint8_t { natural, left, center, right, justify };

    struct Paragraph {
        std::size_t length = 0;           ///< with its ending
        std::optional<BlockStyle> style;  ///< the attribute "app.tesserine.block"
        int indent = 0;                   ///< 0 to 8
        Alignment alignment = Alignment::natural;
        bool isChecked = false;          ///< of a checklist
        std::optional<int> startNumber;  ///< of the first item of a numbered list
    };
    struct Run {
        std::size_t start = 0;
        std::size_t length = 0;
        InlineStyle style;
    };

    std::u16string text;
    /// In order; their lengths add up to that of `text`.
    std::vector<Paragraph> paragraphs;
    /// In order, not overlapping; text outside has no style of its own.
    std::vector<Run> runs;

    /// Adds `piece` (UTF-8) as one more paragraph. The caller puts the "\n" that ends it.
    void append(std::string_view piece, std::optional<BlockStyle> style);
};

}  // namespace tesserine
