#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Finds amounts, account numbers and dates in free text and gives each a key that is the same
/// however it is written: 1,234.50 and 1234.50 are "tsn1234p50", 2025-01-15 and 01/15/2025 are
/// "tsx20250115".
///
/// Keys are lower-case ASCII letters and digits. Pure functions, linear in the text; safe from any
/// thread. Texts are valid UTF-8.
class SearchAnalyzer {
public:
    /// Keys of one document that are kept: those that sort first.
    static constexpr std::size_t maximumKeys = 600;

    /// One key and the part of the text it was read from, as byte offsets.
    struct Found {
        std::string key;
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    /// The keys of all texts, sorted, each once, at most `maximumKeys`, joined by spaces.
    static std::string keyText(std::span<const std::string_view> texts);
    /// Every key in the text where it stands, in no particular order; one place may give several
    /// (03/04/2025 is read both ways), and a key may come again.
    static std::vector<Found> find(std::string_view text);

    /// Whether a term of the index is such a key and not a word somebody wrote.
    static bool isKey(std::string_view term);

    /// "tsy2025"
    static std::string yearKey(int year);
    /// "tsm202501"
    static std::string monthKey(int year, int month);
    /// "tsx20250115"
    static std::string dateKey(int year, int month, int day);
    /// "tsn1234p50" for "1234.50"; `amount` is digits with at most one point between them.
    static std::string amountKey(std::string_view amount);
    /// "tsd12345678"
    static std::string accountKey(std::string_view digits);
};

}  // namespace tesserine
