#include "core/body/PassageSelection.h"

#include "base/Text.h"
#include "core/body/LockedPassages.h"

#include <algorithm>
#include <utility>

namespace tesserine {
namespace {

using Kind = BlockStyle::Kind;
using Paragraph = AttributedText::Paragraph;
using Run = AttributedText::Run;

constexpr char16_t noBreakUnit = u'\u00A0';

/// As the plain text of a note shows it; the offsets stay.
std::u16string plain(std::u16string_view text) {
    std::u16string shown(text);
    std::ranges::replace(shown, AttributedText::lineBreak, u'\n');
    std::ranges::replace(shown, noBreakUnit, u' ');
    return shown;
}

/// A paragraph and where it stands.
struct Placed {
    std::size_t index = 0;
    std::size_t start = 0;
};

/// The paragraph that holds the unit at `offset`.
Placed paragraphAt(const AttributedText& text, std::size_t offset) {
    Placed placed;
    while (placed.index + 1 < text.paragraphs.size()
           && placed.start + text.paragraphs[placed.index].length <= offset) {
        placed.start += text.paragraphs[placed.index].length;
        ++placed.index;
    }
    return placed;
}

/// What is left of the runs when `range` makes way for `units` without a style.
void replaceInRuns(std::vector<Run>& runs, const PassageRange& range, std::size_t units) {
    std::vector<Run> left;
    left.reserve(runs.size() + 1);
    for (const Run& run : runs) {
        if (run.start < range.start) {
            const std::size_t end = std::min(run.end(), range.start);
            left.push_back({run.start, end - run.start, run.style});
        }
        if (run.end() > range.end()) {
            const std::size_t start = std::max(run.start, range.end());
            const std::size_t moved = start - range.length + units;
            left.push_back({moved, run.end() - start, run.style});
        }
    }
    runs = std::move(left);
}

/// With the spaces that would be left at the edges of the paragraphs beside it.
PassageRange withSpacesAround(std::u16string_view text, const PassageRange& range) {
    std::size_t start = range.start;
    std::size_t end = range.end();
    while (start > 0 && text[start - 1] == u' ') {
        --start;
    }
    while (end < text.size() && text[end] == u' ') {
        ++end;
    }
    return {start, end - start};
}

bool isBlank(std::u16string_view text) {
    return text.find_first_not_of(u" \u00A0\u2028\n") == std::u16string_view::npos;
}

}  // namespace

std::vector<PassageRange> placesOf(const AttributedText& text, std::string_view passage) {
    const std::u16string shown = plain(text.text);
    const std::u16string wanted = plain(text::toUTF16(text::trimmed(passage)));
    std::vector<PassageRange> places;
    if (wanted.empty()) return places;
    for (std::size_t at = shown.find(wanted); at != std::u16string::npos;
         at = shown.find(wanted, at + wanted.size())) {
        places.push_back({at, wanted.size()});
    }
    return places;
}

bool isLockable(const AttributedText& text, const PassageRange& range) {
    const auto selected = std::u16string_view(text.text).substr(range.start, range.length);
    return !isBlank(selected)
           && selected.find(AttributedText::objectCharacter) == std::u16string_view::npos;
}

std::string plainText(const AttributedText& text, const PassageRange& range) {
    const auto selected = std::u16string_view(text.text).substr(range.start, range.length);
    std::u16string lines(selected.substr(0, selected.find_last_not_of(u'\n') + 1));
    std::ranges::replace(lines, AttributedText::lineBreak, u'\n');
    return text::fromUTF16(lines);
}

void lockRange(AttributedText& text, const PassageRange& passage, std::string_view blob) {
    const PassageRange range = withSpacesAround(text.text, passage);
    const Placed first = paragraphAt(text, range.start);
    const Placed last = paragraphAt(text, range.end() - 1);
    const auto firstParagraph = text.paragraphs.begin() + static_cast<std::ptrdiff_t>(first.index);
    const auto lastParagraph = text.paragraphs.begin() + static_cast<std::ptrdiff_t>(last.index);
    const std::size_t lastEnd = last.start + lastParagraph->length;
    const std::u16string_view all(text.text);
    const std::u16string_view before = all.substr(first.start, range.start - first.start);
    const std::u16string_view after =
        range.end() < lastEnd ? all.substr(range.end(), lastEnd - range.end()) : u"";

    // From the first paragraph to the last, what is blank beside the passage goes with it.
    PassageRange replaced = range;
    std::vector<Paragraph> paragraphs;
    std::u16string units;
    if (isBlank(before)) {
        replaced = {first.start, range.end() - first.start};
    } else {
        paragraphs.push_back(*firstParagraph);
        paragraphs.back().length = before.size() + 1;
        units += u'\n';
    }
    const std::size_t objectStart = replaced.start + units.size();
    paragraphs.push_back(
        {.length = 2,
         .style = BlockStyle{Kind::encrypted},
         .container = firstParagraph->container});
    units += AttributedText::objectCharacter;
    units += u'\n';
    if (isBlank(after)) {
        replaced.length = lastEnd - replaced.start;
    } else {
        paragraphs.push_back(*lastParagraph);
        paragraphs.back().length = after.size();
        paragraphs.back().startNumber.reset();
        paragraphs.back().beginsBlock = false;
    }

    replaceInRuns(text.runs, replaced, units.size());
    const auto next =
        std::ranges::find_if(text.runs, [&](const Run& run) { return run.start >= objectStart; });
    text.runs.insert(next, Run{objectStart, 1, {.object = lockedBlock(blob)}});
    text.text.replace(replaced.start, replaced.length, units);
    const auto behind = text.paragraphs.erase(firstParagraph, lastParagraph + 1);
    text.paragraphs.insert(behind, paragraphs.begin(), paragraphs.end());
}

}  // namespace tesserine
