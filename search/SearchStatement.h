#pragma once

#include "base/Instant.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Turns a search into SQL and bindings. Pure: nothing is run here, so the whole of it is tested as
/// text. What a person typed only ever becomes a binding.
namespace tesserine {

/// What fills one `?`.
using SQLValue = std::variant<std::int64_t, double, std::string>;

/// A piece of SQL, or a whole statement, with what fills its parameters in order.
struct BoundSQL {
    std::string sql;
    std::vector<SQLValue> bindings{};
    friend bool operator==(const BoundSQL&, const BoundSQL&) = default;
};

enum class SearchSort { relevance, newest, oldest };

/// A search ready to be stated. Expressions are in the syntax of FTS5, every word in double quotes.
struct Search {
    std::optional<std::string> match{};   ///< none: all documents that pass the filters
    std::optional<std::string> strict{};  ///< rows that also match this rank higher
    std::vector<std::string> negated{};   ///< rows that match one of these are left out
    std::vector<BoundSQL> filters{};      ///< conditions of `SearchFilters.h`
    SearchSort sort = SearchSort::relevance;
    std::int64_t limit = 50;  ///< rows
};

/// Stand before and after every matched word in highlights and snippets.
namespace marker {
inline constexpr std::string_view open = "\u2062[";
inline constexpr std::string_view close = "]\u2062";
}  // namespace marker

/// The statement for `search` at the time `now`. Its rows have eighteen columns: uid, kind, title,
/// notebook, tags, created, updated, has_attach, snippet, score, highlighted title, latitude,
/// longitude, highlighted tags, highlighted notebook, highlighted attachments, trashed, favorite.
BoundSQL searchStatement(const Search& search, Instant now);

/// A body with more characters than this is given whole and without marks by
/// `rankedFirstStatement`, in the place of its snippet.
inline constexpr std::int64_t longBody = 50'000;

/// The same rows for a search for words, which is ranked before anything is marked: quicker when
/// more rows match than are wanted, since marking a row takes longer than ranking it.
BoundSQL rankedFirstStatement(const Search& search, Instant now);
/// What is looked for is looked for twice there, which does not pay for phrases, for beginnings of
/// words, nor for a large limit.
bool isQuickerRankedFirst(const Search& search);

/// How many rows of `search` there are, counted no further than its limit.
BoundSQL countStatement(const Search& search);

/// The attachments of the notes `uids` that match `expression`, which names columns of `afts`.
/// Rows: note_uid, uid, filename, mime, snippet, highlighted filename, score.
BoundSQL attachmentStatement(const std::string& expression, const std::vector<std::string>& uids);

}  // namespace tesserine
