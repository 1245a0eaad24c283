#pragma once

#include "search/QueryFields.h"
#include "search/SearchIndex.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Something to offer to a person who types a query.
struct SearchSuggestion {
    enum class Kind {
        operatorName,  ///< "tag:", in JSON "operator"
        value,         ///< what may stand after an operator
        word,          ///< a word or a title of the library
        recent,        ///< an earlier query
    };
    Kind kind = Kind::word;
    std::string title;
    std::string replacement;  ///< the whole new text of the field
    std::string detail;       ///< a help line or a count; may be empty
};

/// "operator", "value", "word" or "recent".
std::string_view nameOf(SearchSuggestion::Kind kind);

/// Makes suggestions from the index and earlier searches. Throws `SQLiteDatabase::Error`; safe from
/// any thread.
class SearchSuggestions {
public:
    static constexpr std::size_t maximumCount = 8;

    explicit SearchSuggestions(SearchIndex& index) : index_(index) {}

    /// For `typed`, whose end is where the person types: operators, values, earlier queries, words,
    /// titles, at most eight. None for a very long text.
    std::vector<SearchSuggestion> suggest(
        std::string_view typed, std::span<const std::string> recent) const;

private:
    struct Typing;
    void addOperators(Typing& typing) const;
    void addValues(Typing& typing) const;
    void addRecent(Typing& typing, std::span<const std::string> recent) const;
    void addWords(Typing& typing) const;
    std::vector<SearchSuggestion> valuesOf(QueryField field) const;

    SearchIndex& index_;
};

}  // namespace tesserine
