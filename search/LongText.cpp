#include "search/LongText.h"

#include "search/MarkedText.h"
#include "search/QueryCharacters.h"
#include "search/SearchIndex.h"
#include "search/SearchStatement.h"

#include <algorithm>
#include <vector>

namespace tesserine {
namespace {

/// Bytes that are looked at on either side of a match; words that are shown take fewer.
constexpr std::size_t reach = 600;

struct Term {
    std::string word;
    bool isBeginning = false;
};

/// Hands over the words of `text` in order, as views into it, until `take` returns false.
template <class Take>
void forEachWord(std::string_view text, Take take) {
    for (std::string_view word = firstWord(text); !word.empty(); word = firstWord(text)) {
        if (!take(word)) return;
        text.remove_prefix(static_cast<std::size_t>(word.data() + word.size() - text.data()));
    }
}

/// What stands in quotes; an asterisk behind them is for the last word in them.
std::vector<Term> termsOf(std::string_view expression) {
    std::vector<Term> terms;
    for (std::size_t open = expression.find('"'); open != std::string_view::npos;
         open = expression.find('"')) {
        expression.remove_prefix(open + 1);
        const std::size_t close = std::min(expression.find('"'), expression.size());
        forEachWord(expression.substr(0, close), [&terms](std::string_view word) {
            terms.push_back({indexFold(word)});
            return true;
        });
        expression.remove_prefix(std::min(close + 1, expression.size()));
        if (expression.starts_with('*') && !terms.empty()) terms.back().isBeginning = true;
    }
    return terms;
}

bool isWanted(std::string_view word, const std::vector<Term>& terms) {
    const std::string folded = indexFold(word);
    return std::ranges::any_of(terms, [&folded](const Term& term) {
        return term.isBeginning ? folded.starts_with(term.word) : folded == term.word;
    });
}

std::size_t firstWanted(std::string_view text, const std::vector<Term>& terms) {
    std::size_t found = 0;
    forEachWord(text, [&](std::string_view word) {
        if (!isWanted(word, terms)) return true;
        found = static_cast<std::size_t>(word.data() - text.data());
        return false;
    });
    return found;
}

/// `place`, or the next one at which a scalar begins.
std::size_t scalarFrom(std::string_view text, std::size_t place) {
    const auto isContinuation = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    while (place < text.size() && isContinuation(text[place]))
        ++place;
    return std::min(place, text.size());
}

std::string withMarks(std::string_view text, const std::vector<Term>& terms) {
    std::string result;
    const char* behind = text.data();  // the last word
    forEachWord(text, [&](std::string_view word) {
        result.append(behind, word.data());
        behind = word.data() + word.size();
        const bool isMarked = isWanted(word, terms);
        if (isMarked) result += marker::open;
        result += word;
        if (isMarked) result += marker::close;
        return true;
    });
    return result.append(behind, text.data() + text.size());
}

}  // namespace

std::string longTextExcerpt(
    std::string_view text, std::string_view expression, std::size_t wordLimit) {
    const std::vector<Term> terms = termsOf(expression);
    const std::size_t place = firstWanted(text, terms);
    const std::size_t begin = scalarFrom(text, place < reach ? 0 : place - reach);
    const std::size_t end = scalarFrom(text, place + reach);
    const std::string_view seen = text.substr(begin, end - begin);
    std::string excerpt = marked::excerpt(withMarks(seen, terms), wordLimit);
    // Where words are longer than what is looked at, the text goes on though the words end.
    if (begin > 0 && !excerpt.starts_with("…")) excerpt.insert(0, "…");
    if (end < text.size() && !excerpt.ends_with("…")) excerpt += "…";
    return excerpt;
}

}  // namespace tesserine
