#pragma once

#include "search/SearchIndex.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Put behind the beginning of terms it stands after all of them.
inline constexpr std::string_view lastOfTerms = "\xF4\x8F\xBF\xBF";

/// The words of the index, for finding the one that somebody meant. Values; safe from any thread
/// once made.
class TermDictionary {
public:
    TermDictionary() = default;
    /// Terms with digits are left out: numbers are never corrected into one another.
    explicit TermDictionary(std::vector<SearchIndex::Term> terms);

    /// The word that differs least from `word`, which is folded: by one letter added, left out,
    /// changed or swapped with its neighbour, by two for eight letters and more. Of equals the one
    /// in most documents, then the first of the alphabet. None for fewer than four letters.
    std::optional<std::string> closest(std::string_view word) const;

private:
    struct Entry {
        std::u32string letters;
        std::uint64_t kinds = 0;  ///< one bit for each letter in it, some sharing one
        std::string term;
        std::int64_t documents = 0;
    };
    std::vector<Entry> entries_;
};

/// Insertions, deletions, changes and swaps of neighbours that turn `a` into `b`; `limit` + 1 when
/// it takes more than `limit`. No letter is changed twice.
std::size_t editDistance(std::u32string_view a, std::u32string_view b, std::size_t limit);

}  // namespace tesserine
