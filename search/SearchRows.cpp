#include "search/SearchRows.h"

#include "search/LongText.h"
#include "search/MarkedText.h"
#include "search/SearchFilters.h"

#include <unordered_map>
#include <utility>

namespace tesserine {

namespace {

/// Words in a snippet that SQLite does not make.
constexpr std::size_t snippetWords = 14;

/// The rows of a statement; reset at the end, since one in the middle of its rows keeps the file as
/// it was then.
class Rows {
public:
    Rows(SearchIndex& index, const BoundSQL& bound) : statement_(index.prepared(bound.sql)) {
        int parameter = 0;
        for (const SQLValue& value : bound.bindings) {
            bind(++parameter, value);
        }
    }
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    ~Rows() { statement_.reset(); }

    bool next() { return statement_.step(); }
    const Statement& row() const { return statement_; }

private:
    void bind(int parameter, const SQLValue& value) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            statement_.bindText(parameter, *text);
        } else if (const auto* number = std::get_if<double>(&value)) {
            statement_.bindDouble(parameter, *number);
        } else {
            statement_.bindInteger(parameter, std::get<std::int64_t>(value));
        }
    }

    Statement& statement_;
};

std::string textOf(const Statement& row, int column) { return row.text(column).value_or(""); }

std::vector<std::string> tagsOf(std::string_view joined) {
    std::vector<std::string> tags;
    while (!joined.empty()) {
        const std::size_t end = std::min(joined.find(tagSeparator), joined.size());
        tags.emplace_back(joined.substr(0, end));
        joined.remove_prefix(std::min(end + 1, joined.size()));
    }
    return tags;
}

/// The index keeps 0 for a date that is not there.
std::optional<Instant> instantOf(const Statement& row, int column) {
    const double seconds = row.real(column);
    if (seconds == 0) return std::nullopt;
    return Instant::fromSeconds(seconds);
}

std::optional<double> degreesOf(const Statement& row, int column) {
    if (row.isNull(column)) return std::nullopt;
    return row.real(column);
}

/// SQLite makes a snippet of the body, unless the body is long.
std::string snippetOf(std::string_view body, const Search& search) {
    const bool isLong = body.size() > static_cast<std::size_t>(longBody);
    return isLong ? longTextExcerpt(body, search.match.value_or(""), snippetWords)
                  : std::string(body);
}

SearchResult resultOf(const Statement& row, const Search& search) {
    return {
        .id = Uuid::parse(textOf(row, 0)).value_or(Uuid{}),
        .kind = row.textView(1) == nameOf(SearchKind::task) ? SearchKind::task : SearchKind::note,
        .title = textOf(row, 2),
        .notebook = textOf(row, 3),
        .tags = tagsOf(textOf(row, 4)),
        .createdAt = instantOf(row, 5),
        .updatedAt = instantOf(row, 6),
        .hasAttachment = row.integer(7) != 0,
        .snippet = snippetOf(row.textView(8), search),
        .score = row.real(9),
        .highlightedTitle = textOf(row, 10),
        .latitude = degreesOf(row, 11),
        .longitude = degreesOf(row, 12),
        .highlightedTags = textOf(row, 13),
        .highlightedNotebook = textOf(row, 14),
        // This column may hold megabytes.
        .highlightedAttachments = marked::excerpt(row.textView(15), snippetWords),
        .isTrashed = row.integer(16) != 0,
        .isFavorite = row.integer(17) != 0};
}

/// Whether more documents match than are wanted, whatever the filters leave of them.
bool matchesMore(SearchIndex& index, const Search& search) {
    return Rows(
               index,
               {"SELECT 1 FROM fts WHERE fts MATCH ? LIMIT 1 OFFSET ?",
                {*search.match, search.limit}})
        .next();
}

/// Whether the text of a matching document may be long. By the counts that the index keeps: six
/// columns take seven bytes while the longest has fewer than 16,384 words.
bool matchesLongText(SearchIndex& index, const Search& search) {
    return Rows(
               index,
               {"SELECT 1 FROM fts CROSS JOIN fts_docsize AS size ON size.id = fts.rowid "
                "WHERE fts MATCH ? AND length(size.sz) > 7 LIMIT 1",
                {*search.match}})
        .next();
}

bool isRankedFirst(SearchIndex& index, const Search& search) {
    if (isQuickerRankedFirst(search) && matchesMore(index, search)) return true;
    return search.match && matchesLongText(index, search);
}

void readInto(
    std::vector<SearchResult>& results, SearchIndex& index, const Search& search, Instant now) {
    Rows rows(
        index,
        isRankedFirst(index, search) ? rankedFirstStatement(search, now)
                                     : searchStatement(search, now));
    while (rows.next()) {
        results.push_back(resultOf(rows.row(), search));
    }
}

}  // namespace

std::vector<SearchResult> readResults(SearchIndex& index, const Search& search, Instant now) {
    std::vector<SearchResult> results;
    const bool isBrowse = !search.match && search.sort == SearchSort::relevance;
    if (!isBrowse) {
        readInto(results, index, search, now);
        return results;
    }
    // Favourites come first, whenever the rest was changed.
    for (const bool isFavorite : {true, false}) {
        Search half = search;
        half.filters.push_back(filter::isFavorite(isFavorite));
        half.limit = search.limit - static_cast<std::int64_t>(results.size());
        if (half.limit > 0) readInto(results, index, half, now);
    }
    return results;
}

void showWhatMatched(SearchResult& result) {
    if (marked::hasMark(result.snippet)) return;
    for (const std::string* text :
         {&result.highlightedAttachments, &result.highlightedTags, &result.highlightedNotebook}) {
        if (!marked::hasMark(*text)) continue;
        result.snippet = *text;
        return;
    }
}

void markParts(
    SearchIndex& index, const std::vector<std::string>& parts, std::vector<SearchResult>& results) {
    for (SearchResult& result : results) {
        result.highlightedTitle = marked::mark(result.title, parts);
        Rows stored(
            index,
            {"SELECT body, attachments FROM fts "
             "WHERE rowid = (SELECT rowid FROM docs WHERE uid = ?)",
             {result.id.text()}});
        if (!stored.next()) continue;
        const auto excerpt = [&](int column) {
            return marked::excerpt(
                marked::mark(stored.row().textView(column), parts), snippetWords);
        };
        result.snippet = excerpt(0);
        result.highlightedAttachments = excerpt(1);
    }
}

std::int64_t countResults(SearchIndex& index, const Search& search) {
    Rows count(index, countStatement(search));
    return count.next() ? count.row().integer(0) : 0;
}

bool readAttachmentMatches(
    SearchIndex& index, const std::string& expression, std::vector<SearchResult>& results) {
    std::unordered_map<std::string, SearchResult*> owners;
    std::vector<std::string> uids;
    for (SearchResult& result : results) {
        if (!result.hasAttachment) continue;
        uids.push_back(result.id.text());
        owners[uids.back()] = &result;
    }
    if (uids.empty()) return false;
    Rows matches(index, attachmentStatement(expression, uids));
    bool isAny = false;
    while (matches.next()) {
        const Statement& row = matches.row();
        owners.at(textOf(row, 0))
            ->attachments.push_back(
                {.id = Uuid::parse(textOf(row, 1)).value_or(Uuid{}),
                 .filename = textOf(row, 2),
                 .mimeType = textOf(row, 3),
                 .snippet = textOf(row, 4),
                 .highlightedFilename = textOf(row, 5),
                 .score = row.real(6)});
        isAny = true;
    }
    return isAny;
}

}  // namespace tesserine
