#pragma once

#include "core/body/BlockStyle.h"
#include "core/body/InlineStyle.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// A note being edited: UTF-16 text whose paragraphs end in "\n", with a style for each paragraph
/// and for stretches of text. Lengths and offsets count UTF-16 units. Knows no user interface.
///
/// In the text U+2028 breaks a line inside its paragraph, and U+FFFC with an `object` stands for
/// something that is not text. `attributedText` makes it of a stored body, `canonicalHTML` writes
/// it back.
struct AttributedText {
    static constexpr char16_t lineBreak = u'\u2028';
    static constexpr char16_t objectCharacter = u'\uFFFC';
    static constexpr int deepestIndent = 8;

    enum class Alignment : std::uint8_t { natural, left, center, right, justify };

    /// The element that holds a paragraph where there is a choice.
    enum class Holder : std::uint8_t {
        usual,      ///< p; in a list the item alone, in a code block pre alone
        paragraph,  ///< p inside an item of a list
        division,   ///< div in the place of p
        none,       ///< text that stands bare beside blocks or in a quote
        code,       ///< code inside pre
    };

    struct Paragraph {
        std::size_t length = 0;           ///< with its ending
        std::optional<BlockStyle> style;  ///< the attribute "app.tesserine.block"
        int indent = 0;                   ///< of items of lists, 0 to `deepestIndent`
        Alignment alignment = Alignment::natural;
        bool isChecked = false;          ///< of a checklist
        std::optional<int> startNumber;  ///< of the first item of a numbered list

        // Further things of the stored body, which an editor hands on. A paragraph that is split
        // off another one inherits its holder, container and attributes only.

        Holder holder = Holder::usual;
        /// Of a paragraph that begins a list, quote or code block where one ends right before.
        bool beginsBlock = false;
        std::uint32_t container = 0;        ///< 0: none; otherwise the place in `containers` plus 1
        OwnedAttributes attributes{};       ///< such as dir and lang
        OwnedAttributes frameAttributes{};  ///< of the list, quote or code block that it begins

        friend bool operator==(const Paragraph&, const Paragraph&) = default;
    };

    /// A div around paragraphs.
    struct Container {
        std::uint32_t parent = 0;  ///< as `Paragraph::container`; stands before this one
        OwnedAttributes attributes{};

        friend bool operator==(const Container&, const Container&) = default;
    };

    struct Run {
        std::size_t start = 0;
        std::size_t length = 0;
        InlineStyle style;

        std::size_t end() const { return start + length; }
        friend bool operator==(const Run&, const Run&) = default;
    };

    std::u16string text;
    /// In order; their lengths add up to that of `text`.
    std::vector<Paragraph> paragraphs;
    /// In order, not overlapping; text outside has no style of its own. One with an `object` is one
    /// U+FFFC long.
    std::vector<Run> runs;
    std::vector<Container> containers;

    /// Adds `piece` (UTF-8) as one more paragraph. The caller puts the "\n" that ends it.
    void append(std::string_view piece, std::optional<BlockStyle> style);

    friend bool operator==(const AttributedText&, const AttributedText&) = default;
};

/// The value of the attribute style for an alignment that is not natural, and the other way round.
std::string alignmentStyle(AttributedText::Alignment alignment);
std::optional<AttributedText::Alignment> alignmentOf(std::string_view style);

BlockStyle::Kind kindOf(const AttributedText::Paragraph& paragraph);
/// Whether it is an item of a list of any kind.
bool isListItem(const AttributedText::Paragraph& paragraph);
/// Whether two neighbours stand in one list, quote or code block, when `next` does not begin one of
/// its own.
bool areAlike(const AttributedText::Paragraph& previous, const AttributedText::Paragraph& next);

}  // namespace tesserine
