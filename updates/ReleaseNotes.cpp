#include "updates/ReleaseNotes.h"

#include "base/Text.h"

namespace tesserine {
namespace {

/// What stands behind the mark of a bullet; the line itself when it has none.
std::string_view withoutBullet(std::string_view line) {
    for (const std::string_view mark : {"- ", "* ", "• "}) {
        if (line.starts_with(mark)) return text::trimmed(line.substr(mark.size()));
    }
    return line;
}

}  // namespace

ReleaseNotes ReleaseNotes::parse(std::string_view text) {
    ReleaseNotes notes;
    bool isInParagraph = false;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text::trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);

        const std::string_view content = withoutBullet(line);
        const bool isBullet = content.size() < line.size();
        if (content.empty()) {
            isInParagraph = false;
        } else if (isBullet) {
            notes.blocks.push_back({Block::Kind::bullet, std::string(content)});
            isInParagraph = false;
        } else if (isInParagraph) {
            notes.blocks.back().text.append(" ").append(content);
        } else {
            notes.blocks.push_back({Block::Kind::paragraph, std::string(content)});
            isInParagraph = true;
        }
    }
    return notes;
}

}  // namespace tesserine
