#include "search/SearchRows.h"

#include "search/MarkedText.h"
#include "search/SearchFilters.h"
#include "search/SearchIndex.h"

#include <unordered_map>
#include <utility>

namespace tesserine {

namespace {

/// Words in a snippet that SQLite does not make.
constexpr std::size_t snippetWords = 14;

Statement prepared(SQLiteDatabase& index, const BoundSQL& bound) {
    Statement statement = index.prepare(bound.sql);
    int parameter = 0;
    for (const SQLValue& value : bound.bindings) {
        ++parameter;
        if (const auto* text = std::get_if<std::string>(&value)) {
            statement.bindText(parameter, *text);
        } else if (const auto* number = std::get_if<double>(&value)) {
            statement.bindDouble(parameter, *number);
        } else {
            statement.bindInteger(parameter, std::get<std::int64_t>(value));
        }
    }
    return statement;
}

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

SearchResult resultOf(const Statement& row) {
    return {
        .id = Uuid::parse(textOf(row, 0)).value_or(Uuid{}),
        .kind = row.textView(1) == nameOf(SearchKind::task) ? SearchKind::task : SearchKind::note,
        .title = textOf(row, 2),
        .notebook = textOf(row, 3),
        .tags = tagsOf(textOf(row, 4)),
        .createdAt = instantOf(row, 5),
        .updatedAt = instantOf(row, 6),
        .hasAttachment = row.integer(7) != 0,
        .snippet = textOf(row, 8),
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
bool matchesMore(SQLiteDatabase& index, const Search& search) {
    Statement& next = index.cached("SELECT 1 FROM fts WHERE fts MATCH ? LIMIT 1 OFFSET ?");
    next.bindText(1, *search.match);
    next.bindInteger(2, search.limit);
    const bool isMore = next.step();
    next.reset();
    return isMore;
}

void readInto(
    std::vector<SearchResult>& results, SQLiteDatabase& index, const Search& search, Instant now) {
    const bool isRankedFirst = isQuickerRankedFirst(search) && matchesMore(index, search);
    Statement rows = prepared(
        index, isRankedFirst ? rankedFirstStatement(search, now) : searchStatement(search, now));
    while (rows.step()) {
        results.push_back(resultOf(rows));
    }
}

}  // namespace

std::vector<SearchResult> readResults(SQLiteDatabase& index, const Search& search, Instant now) {
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
    SQLiteDatabase& index,
    const std::vector<std::string>& parts,
    std::vector<SearchResult>& results) {
    Statement stored = index.prepare(
        "SELECT body, attachments FROM fts WHERE rowid = (SELECT rowid FROM docs WHERE uid = ?)");
    for (SearchResult& result : results) {
        result.highlightedTitle = marked::mark(result.title, parts);
        stored.bindText(1, result.id.text());
        if (stored.step()) {
            result.snippet = marked::excerpt(marked::mark(stored.textView(0), parts), snippetWords);
            result.highlightedAttachments =
                marked::excerpt(marked::mark(stored.textView(1), parts), snippetWords);
        }
        stored.reset();
    }
}

std::int64_t countResults(SQLiteDatabase& index, const Search& search) {
    Statement count = prepared(index, countStatement(search));
    return count.step() ? count.integer(0) : 0;
}

bool readAttachmentMatches(
    SQLiteDatabase& index, const std::string& expression, std::vector<SearchResult>& results) {
    std::unordered_map<std::string, SearchResult*> owners;
    std::vector<std::string> uids;
    for (SearchResult& result : results) {
        if (!result.hasAttachment) continue;
        uids.push_back(result.id.text());
        owners[uids.back()] = &result;
    }
    if (uids.empty()) return false;
    Statement rows = prepared(index, attachmentStatement(expression, uids));
    bool isAny = false;
    while (rows.step()) {
        owners.at(textOf(rows, 0))
            ->attachments.push_back(
                {.id = Uuid::parse(textOf(rows, 1)).value_or(Uuid{}),
                 .filename = textOf(rows, 2),
                 .mimeType = textOf(rows, 3),
                 .snippet = textOf(rows, 4),
                 .highlightedFilename = textOf(rows, 5),
                 .score = rows.real(6)});
        isAny = true;
    }
    return isAny;
}

}  // namespace tesserine
