#include "core/body/AttributedText.h"

#include "base/Text.h"

namespace tesserine {

void AttributedText::append(std::string_view piece, std::optional<BlockStyle> style) {
    const std::u16string units = text::toUTF16(piece);
    text += units;
    if (!units.empty()) paragraphs.push_back({.length = units.size(), .style = style});
}

}  // namespace tesserine
