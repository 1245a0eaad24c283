#include "search/TermDictionary.h"

#include "base/UTF8.h"
#include "search/QueryCharacters.h"

#include <algorithm>
#include <array>
#include <bit>
#include <tuple>
#include <utility>

namespace tesserine {

namespace {

constexpr std::size_t fewestLetters = 4;
constexpr std::size_t manyLetters = 8;  // from here on two letters may be wrong

std::u32string lettersOf(std::string_view text) {
    std::u32string letters;
    while (!text.empty()) {
        const auto [scalar, length] = utf8::first(text);
        letters += scalar;
        text.remove_prefix(length);
    }
    return letters;
}

std::uint64_t kindsOf(std::u32string_view letters) {
    std::uint64_t kinds = 0;
    for (const char32_t letter : letters) {
        kinds |= std::uint64_t{1} << (letter % 64);
    }
    return kinds;
}

std::size_t difference(std::size_t a, std::size_t b) { return a > b ? a - b : b - a; }

}  // namespace

std::size_t editDistance(std::u32string_view a, std::u32string_view b, std::size_t limit) {
    const std::size_t tooMany = limit + 1;
    if (difference(a.size(), b.size()) > limit) return tooMany;
    // Three rows of the usual table: two letters back is as far as a swap looks.
    std::array<std::vector<std::size_t>, 3> rows;
    for (auto& row : rows) {
        row.resize(b.size() + 1);
    }
    for (std::size_t j = 0; j <= b.size(); ++j) {
        rows[0][j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        auto& row = rows[i % 3];
        const auto& above = rows[(i + 2) % 3];
        const auto& twoAbove = rows[(i + 1) % 3];
        row[0] = i;
        std::size_t least = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
            const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isSwap) row[j] = std::min(row[j], twoAbove[j - 2] + 1);
            least = std::min(least, row[j]);
        }
        if (least > limit) return tooMany;
    }
    return std::min(rows[a.size() % 3][b.size()], tooMany);
}

TermDictionary::TermDictionary(std::vector<SearchIndex::Term> terms) {
    entries_.reserve(terms.size());
    for (SearchIndex::Term& term : terms) {
        if (hasDigit(term.term)) continue;
        Entry entry{.letters = lettersOf(term.term), .documents = term.documents};
        entry.kinds = kindsOf(entry.letters);
        entry.term = std::move(term.term);
        entries_.push_back(std::move(entry));
    }
}

std::optional<std::string> TermDictionary::closest(std::string_view word) const {
    const std::u32string letters = lettersOf(word);
    if (letters.size() < fewestLetters) return std::nullopt;
    const std::size_t limit = letters.size() < manyLetters ? 1 : 2;
    const std::uint64_t kinds = kindsOf(letters);

    const Entry* best = nullptr;
    std::size_t bestDistance = limit + 1;
    for (const Entry& entry : entries_) {
        if (difference(entry.letters.size(), letters.size()) > limit) continue;
        // One edit takes away at most one kind of letter and brings at most one.
        const auto otherKinds = static_cast<std::size_t>(std::popcount(entry.kinds ^ kinds));
        if (otherKinds > 2 * limit) continue;
        const std::size_t distance = editDistance(letters, entry.letters, limit);
        if (distance == 0 || distance > limit) continue;
        const auto rank = [](const Entry& candidate, std::size_t away) {
            return std::make_tuple(away, -candidate.documents, std::string_view(candidate.term));
        };
        if (best != nullptr && rank(*best, bestDistance) <= rank(entry, distance)) continue;
        best = &entry;
        bestDistance = distance;
    }
    if (best == nullptr) return std::nullopt;
    return best->term;
}

}  // namespace tesserine
