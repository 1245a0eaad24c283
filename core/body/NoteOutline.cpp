#include "core/body/NoteOutline.h"

#include "base/Text.h"
#include "core/body/AttributedText.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tesserine {
namespace {

constexpr std::u16string_view paragraphEnds = u"\n\r\u2029";

std::u16string_view withoutEnding(std::u16string_view paragraph) {
    return paragraph.substr(0, paragraph.find_last_not_of(paragraphEnds) + 1);
}

bool isHeading(const std::optional<BlockStyle>& style) {
    return style && style->kind == BlockStyle::Kind::heading && style->level > 0;
}

}  // namespace

std::vector<OutlineEntry> NoteOutline::entries(const AttributedText& edited) {
    std::vector<OutlineEntry> entries;
    const std::u16string_view text = edited.text;
    auto styled = edited.paragraphs.begin();
    std::size_t styledEnd = 0;
    for (std::size_t start = 0, end = 0; start < text.size(); start = end) {
        end = std::min(text.find_first_of(paragraphEnds, start), text.size() - 1) + 1;
        for (; styled != edited.paragraphs.end() && styledEnd + styled->length <= start; ++styled) {
            styledEnd += styled->length;
        }
        if (styled == edited.paragraphs.end()) break;
        if (!isHeading(styled->style)) continue;
        const std::string line = text::fromUTF16(withoutEnding(text.substr(start, end - start)));
        const std::string_view trimmed = text::trimmed(line);
        if (trimmed.empty()) continue;
        entries.push_back({styled->style->level, std::string(trimmed), start});
    }
    return entries;
}

}  // namespace tesserine
