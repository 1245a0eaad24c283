#include "ai/Passages.h"

#include "base/Text.h"
#include "search/QueryCharacters.h"

#include <algorithm>
#include <array>

namespace tesserine {
namespace {

/// Words from this length on also stand for those they begin.
constexpr std::size_t shortestPassageBeginning = 5;

/// Where a piece that fills `window` ends: behind the last paragraph, sentence or word in it.
std::size_t endWithin(std::string_view window) {
    constexpr std::array<std::string_view, 6> ends{"\n", ". ", "? ", "! ", "。", " "};
    const auto behindLast = [window](std::string_view mark) {
        const std::size_t place = window.rfind(mark);
        return place == std::string_view::npos ? 0 : place + mark.size();
    };
    if (const std::size_t end = behindLast(ends.front()); end > 0) return end;
    std::size_t sentence = 0;
    for (std::size_t i = 1; i + 1 < ends.size(); ++i) {
        sentence = std::max(sentence, behindLast(ends[i]));
    }
    if (sentence > 0) return sentence;
    const std::size_t word = behindLast(ends.back());
    return word > 0 ? word : window.size();
}

/// Where the words begin that fill the last `overlap` characters before `end`; `end` when there is
/// no gap between words there.
std::size_t startOfOverlap(
    std::string_view text, std::size_t begin, std::size_t end, std::size_t overlap) {
    std::size_t place = end;
    for (std::size_t count = 0; count < overlap && place > begin; ++count) {
        do {
            --place;
        } while (place > begin && (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U);
    }
    const std::size_t gap = text.find_first_of(" \n", place);
    return gap < end && gap > begin ? gap + 1 : end;
}

bool matches(std::string_view token, const std::string& word) {
    return token == word || (token.starts_with(word) && length(word) >= shortestPassageBeginning);
}

}  // namespace

std::vector<std::string_view> cutPassages(
    std::string_view text, std::size_t longest, std::size_t overlap) {
    std::vector<std::string_view> pieces;
    const auto add = [&pieces](std::string_view piece) {
        piece = text::trimmed(piece);
        if (!piece.empty()) pieces.push_back(piece);
    };
    std::size_t begin = 0;
    for (;;) {
        const std::string_view window = text::prefix(text.substr(begin), longest);
        if (begin + window.size() >= text.size()) {
            add(window);
            return pieces;
        }
        const std::size_t end = begin + endWithin(window);
        add(text.substr(begin, end - begin));
        begin = startOfOverlap(text, begin, end, overlap);
    }
}

std::vector<std::size_t> occurrences(std::string_view text, const std::vector<std::string>& words) {
    std::vector<std::size_t> counts(words.size(), 0);
    for (const std::string_view piece : text::words(text)) {
        const std::string token = text::folded(withoutPunctuation(piece));
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (matches(token, words[i])) ++counts[i];
        }
    }
    return counts;
}

namespace {

/// A line without the mark of a list item that plain text puts before it.
std::string_view withoutListMark(std::string_view line) {
    for (const std::string_view mark : {"• ", "[ ] ", "[x] "}) {
        if (line.starts_with(mark)) return line.substr(mark.size());
    }
    return line;
}

}  // namespace

std::string_view bestPlace(std::string_view passage, const std::vector<std::string>& words) {
    constexpr std::size_t longest = 80;
    std::string_view best;
    std::size_t most = 0;
    while (!passage.empty()) {
        const std::size_t end = std::min(passage.find('\n'), passage.size());
        const auto line = withoutListMark(text::trimmed(passage.substr(0, end)));
        const auto counts = occurrences(line, words);
        const auto held = static_cast<std::size_t>(
            std::ranges::count_if(counts, [](std::size_t count) { return count > 0; }));
        if (best.empty() || held > most) {
            best = line;
            most = held;
        }
        passage.remove_prefix(std::min(end + 1, passage.size()));
    }
    const std::string_view kept = text::prefix(best, longest);
    if (kept.size() == best.size()) return kept;
    const std::size_t gap = kept.rfind(' ');
    return gap == std::string_view::npos ? kept : kept.substr(0, gap);
}

}  // namespace tesserine
