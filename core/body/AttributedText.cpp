#include "core/body/AttributedText.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {
namespace {

constexpr std::string_view alignmentProperty = "text-align: ";
/// In the order of `AttributedText::Alignment`.
constexpr std::array<std::string_view, 5> alignmentNames{"", "left", "center", "right", "justify"};

/// What stands around paragraphs that follow one another.
enum class Frame : std::uint8_t { none, list, quote, code };

constexpr Frame frameOf(BlockStyle::Kind kind) {
    using Kind = BlockStyle::Kind;
    constexpr std::array frames{
        std::pair{Kind::codeBlock, Frame::code},
        std::pair{Kind::bullet, Frame::list},
        std::pair{Kind::numbered, Frame::list},
        std::pair{Kind::checklist, Frame::list},
        std::pair{Kind::quote, Frame::quote}};
    for (const auto& [framed, frame] : frames) {
        if (framed == kind) return frame;
    }
    return Frame::none;
}

}  // namespace

void AttributedText::append(std::string_view piece, std::optional<BlockStyle> style) {
    const std::u16string units = text::toUTF16(piece);
    text += units;
    if (!units.empty()) paragraphs.push_back({.length = units.size(), .style = style});
}

std::string alignmentStyle(AttributedText::Alignment alignment) {
    std::string style(alignmentProperty);
    return style.append(alignmentNames[static_cast<std::size_t>(alignment)]);
}

std::optional<AttributedText::Alignment> alignmentOf(std::string_view style) {
    if (!style.starts_with(alignmentProperty)) return std::nullopt;
    style.remove_prefix(alignmentProperty.size());
    const auto* const name = std::find(alignmentNames.begin() + 1, alignmentNames.end(), style);
    if (name == alignmentNames.end()) return std::nullopt;
    return static_cast<AttributedText::Alignment>(name - alignmentNames.begin());
}

BlockStyle::Kind kindOf(const AttributedText::Paragraph& paragraph) {
    return paragraph.style ? paragraph.style->kind : BlockStyle::Kind::paragraph;
}

bool isListItem(const AttributedText::Paragraph& paragraph) {
    return frameOf(kindOf(paragraph)) == Frame::list;
}

bool areAlike(const AttributedText::Paragraph& previous, const AttributedText::Paragraph& next) {
    const Frame frame = frameOf(kindOf(previous));
    if (frame == Frame::none || frame != frameOf(kindOf(next))) return false;
    if (previous.container != next.container) return false;
    return frame != Frame::code || previous.holder == next.holder;
}

}  // namespace tesserine
