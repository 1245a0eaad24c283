#include "core/body/LockedPassages.h"

#include "core/body/HTMLSerializer.h"
#include "core/body/SelectiveEncryption.h"

#include <algorithm>

namespace tesserine {
namespace {

// A canonical body holds "<" only where a tag begins, and such a block only in this form.
constexpr std::string_view opening = R"(<div class="ts-encrypted" data-ts-cipher=")";
constexpr std::string_view behindBlob = "\">";
constexpr std::string_view closing = "</div>";

std::string paragraphs(std::string_view text) {
    std::string html;
    for (bool isLast = false; !isLast;) {
        const std::string_view line = text.substr(0, text.find('\n'));
        html += "<p>";
        html::appendEscapedText(html, line);
        html += "</p>";
        isLast = line.size() == text.size();
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return html;
}

}  // namespace

std::string lockedBlock(std::string_view blob) {
    std::string block(opening);
    html::appendEscapedAttribute(block, blob);
    block.append(behindBlob).append(SelectiveEncryption::placeholder).append(closing);
    return block;
}

std::vector<LockedPassage> lockedPassages(std::string_view body) {
    std::vector<LockedPassage> passages;
    for (std::size_t start = body.find(opening); start != std::string_view::npos;
         start = body.find(opening, start)) {
        const std::size_t blobStart = start + opening.size();
        const std::size_t blobEnd = body.find(behindBlob, blobStart);
        const std::size_t end = body.find(closing, blobEnd);
        if (end == std::string_view::npos) break;
        passages.push_back(
            {.blob = body.substr(blobStart, blobEnd - blobStart),
             .start = start,
             .length = end + closing.size() - start});
        start = end;
    }
    return passages;
}

std::string withoutLock(
    std::string_view body, const LockedPassage& passage, std::string_view text) {
    std::string unlocked(body.substr(0, passage.start));
    unlocked += paragraphs(text);
    unlocked += body.substr(passage.start + passage.length);
    return unlocked;
}

}  // namespace tesserine
