#include "search/MarkedText.h"

#include "base/Text.h"
#include "search/SearchStatement.h"

#include <algorithm>
#include <vector>

namespace tesserine::marked {

namespace {

constexpr std::string_view blanks = " \t\r\n";

/// Where the word before the one at `place` begins; 0 at the first.
std::size_t previousWord(std::string_view text, std::size_t place) {
    const std::size_t end =
        place == 0 ? std::string_view::npos : text.find_last_not_of(blanks, place - 1);
    if (end == std::string_view::npos) return 0;
    const std::size_t blank = text.find_last_of(blanks, end);
    return blank == std::string_view::npos ? 0 : blank + 1;
}

/// Where the blanks behind the word at `place` begin.
std::size_t wordEnd(std::string_view text, std::size_t place) {
    const std::size_t begin = std::min(text.find_first_not_of(blanks, place), text.size());
    return std::min(text.find_first_of(blanks, begin), text.size());
}

bool endsInsideMark(std::string_view text) {
    const std::size_t open = text.rfind(marker::open);
    return open != std::string_view::npos
           && text.find(marker::close, open) == std::string_view::npos;
}

}  // namespace

bool hasMark(std::string_view text) { return text.find(marker::open) != std::string_view::npos; }

std::string mark(std::string_view text, std::span<const std::string> parts) {
    const std::string lower = text::asciiLowercased(text);
    std::vector<bool> isMarked(text.size() + 1);  // the last one ends a mark at the end
    for (const std::string& part : parts) {
        const std::string wanted = text::asciiLowercased(part);
        for (std::size_t at = lower.find(wanted); at != std::string::npos && !wanted.empty();
             at = lower.find(wanted, at + wanted.size())) {
            std::fill_n(isMarked.begin() + static_cast<std::ptrdiff_t>(at), wanted.size(), true);
        }
    }
    std::string result;
    bool isOpen = false;
    for (std::size_t i = 0; i < isMarked.size(); ++i) {
        if (isMarked[i] != isOpen) result += isOpen ? marker::close : marker::open;
        isOpen = isMarked[i];
        if (i < text.size()) result += text[i];
    }
    return result;
}

std::string excerpt(std::string_view text, std::size_t wordLimit) {
    const std::size_t mark = hasMark(text) ? text.find(marker::open) : 0;
    // A third of the words stand before the match, so that it is seen at once.
    std::size_t begin = mark;
    for (std::size_t i = 0; i < wordLimit / 3; ++i) {
        begin = previousWord(text, begin);
    }
    std::size_t end = begin;
    for (std::size_t i = 0; i < wordLimit; ++i) {
        end = wordEnd(text, end);
    }
    const std::string_view kept = text.substr(begin, end - begin);
    std::string words = begin > 0 ? "…" : "";
    words += kept;
    if (endsInsideMark(kept)) words += marker::close;
    if (text.find_first_not_of(blanks, end) != std::string_view::npos) words += "…";
    return words;
}

void forEachPiece(
    std::string_view text, const std::function<void(std::string_view piece, bool isMarked)>& take) {
    bool isMarked = false;
    while (!text.empty()) {
        const std::string_view next = isMarked ? marker::close : marker::open;
        const std::size_t end = std::min(text.find(next), text.size());
        if (end > 0) take(text.substr(0, end), isMarked);
        text.remove_prefix(std::min(end + next.size(), text.size()));
        isMarked = !isMarked;
    }
}

}  // namespace tesserine::marked
