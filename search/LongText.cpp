#include "search/LongText.h"

#include "base/Text.h"
#include "search/MarkedText.h"
#include "search/QueryCharacters.h"
#include "search/SearchStatement.h"

#include <algorithm>
#include <vector>

namespace tesserine {
namespace {

constexpr std::string_view blanks = " \t\r\n";

struct Term {
    std::string word;
    bool isBeginning = false;
};

std::string foldedWord(std::string_view word) { return text::folded(withoutPunctuation(word)); }

/// What stands in quotes; an asterisk behind them is for the last word in them.
std::vector<Term> termsOf(std::string_view expression) {
    std::vector<Term> terms;
    for (std::size_t open = expression.find('"'); open != std::string_view::npos;
         open = expression.find('"')) {
        expression.remove_prefix(open + 1);
        const std::size_t close = std::min(expression.find('"'), expression.size());
        for (const std::string_view word : text::words(expression.substr(0, close))) {
            if (std::string folded = foldedWord(word); !folded.empty()) {
                terms.push_back({std::move(folded)});
            }
        }
        expression.remove_prefix(std::min(close + 1, expression.size()));
        if (expression.starts_with('*') && !terms.empty()) terms.back().isBeginning = true;
    }
    return terms;
}

bool isWanted(std::string_view word, const std::vector<Term>& terms) {
    const std::string folded = foldedWord(word);
    return std::ranges::any_of(terms, [&folded](const Term& term) {
        return term.isBeginning ? folded.starts_with(term.word) : folded == term.word;
    });
}

/// The word at or behind `place`; empty at the end.
std::string_view wordFrom(std::string_view text, std::size_t place) {
    const std::size_t begin = std::min(text.find_first_not_of(blanks, place), text.size());
    const std::size_t end = std::min(text.find_first_of(blanks, begin), text.size());
    return text.substr(begin, end - begin);
}

std::size_t firstWanted(std::string_view text, const std::vector<Term>& terms) {
    std::size_t place = 0;
    for (;;) {
        const std::string_view word = wordFrom(text, place);
        if (word.empty()) return 0;
        const auto begin = static_cast<std::size_t>(word.data() - text.data());
        if (isWanted(word, terms)) return begin;
        place = begin + word.size();
    }
}

/// `wordLimit` words before `place`, and as many behind it.
std::string_view surroundings(std::string_view text, std::size_t place, std::size_t wordLimit) {
    std::size_t begin = place;
    std::size_t end = place;
    for (std::size_t i = 0; i < wordLimit; ++i) {
        const std::size_t last = text.substr(0, begin).find_last_not_of(blanks);
        const std::size_t blank =
            last == std::string_view::npos ? last : text.substr(0, last).find_last_of(blanks);
        begin = blank == std::string_view::npos ? 0 : blank + 1;
        const std::string_view word = wordFrom(text, end);
        end = static_cast<std::size_t>(word.data() + word.size() - text.data());
    }
    // One word more tells that the text goes on.
    return text.substr(begin, end - begin + wordFrom(text, end).size() + 1);
}

std::string withMarks(std::string_view text, const std::vector<Term>& terms) {
    std::string result;
    std::size_t place = 0;  // behind the last word
    for (std::string_view word = wordFrom(text, 0); !word.empty(); word = wordFrom(text, place)) {
        const auto begin = static_cast<std::size_t>(word.data() - text.data());
        result += text.substr(place, begin - place);
        place = begin + word.size();
        if (!isWanted(word, terms)) {
            result += word;
            continue;
        }
        const std::string_view core = withoutPunctuation(word);
        const auto before = static_cast<std::size_t>(core.data() - word.data());
        result += word.substr(0, before);
        result += marker::open;
        result += core;
        result += marker::close;
        result += word.substr(before + core.size());
    }
    return result;
}

}  // namespace

std::string longTextExcerpt(
    std::string_view text, std::string_view expression, std::size_t wordLimit) {
    const std::vector<Term> terms = termsOf(expression);
    const std::size_t place = firstWanted(text, terms);
    return marked::excerpt(withMarks(surroundings(text, place, wordLimit), terms), wordLimit);
}

}  // namespace tesserine
