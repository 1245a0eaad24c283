#include "search/SearchStatement.h"

#include "search/SearchFilters.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace tesserine {

namespace {

/// How old a change may be, in seconds, to rank higher.
constexpr std::array<double, 3> recentAges{30 * 86'400.0, 365 * 86'400.0, 1'095 * 86'400.0};

/// An SQL text literal; `text` holds no quotation mark.
std::string literal(std::string_view text) { return "'" + std::string(text) + "'"; }

std::string markers() { return literal(marker::open) + ", " + literal(marker::close); }

std::string highlighted(std::string_view table, int column) {
    return "highlight(" + std::string(table) + ", " + std::to_string(column) + ", " + markers()
           + ")";
}

std::string snippet(std::string_view table, int column, int tokenCount) {
    return "snippet(" + std::string(table) + ", " + std::to_string(column) + ", " + markers()
           + ", '…', " + std::to_string(tokenCount) + ")";
}

/// The body's part with the best matches; of a long body all of it: the time that SQLite takes for
/// marks grows with the square of the matches.
std::string bodyPart() {
    return "(CASE WHEN length(fts.body) > " + std::to_string(longBody) + " THEN fts.body ELSE "
           + snippet("fts", 1, 14) + " END)";
}

void append(BoundSQL& statement, const BoundSQL& piece) {
    statement.sql += piece.sql;
    statement.bindings.insert(
        statement.bindings.end(), piece.bindings.begin(), piece.bindings.end());
}

/// Lower ranks higher: what helps is taken away, what sinks a row is added.
BoundSQL score(const Search& search, Instant now) {
    BoundSQL score{"bm25(fts, 12.0, 3.0, 6.0, 4.0, 2.0, 0.0)"
                   " + (CASE WHEN docs.trashed = 1 THEN 6.0 ELSE 0.0 END)"
                   " - (CASE WHEN docs.favorite = 1 THEN 0.4 ELSE 0.0 END)"
                   " - (CASE WHEN docs.updated > ? THEN 0.5 WHEN docs.updated > ? THEN 0.3"
                   " WHEN docs.updated > ? THEN 0.1 ELSE 0.0 END)"};
    for (const double age : recentAges) {
        score.bindings.emplace_back(now.seconds() - age);
    }
    if (search.strict) {
        score.sql += " - (CASE WHEN docs.rowid IN (SELECT rowid FROM fts WHERE fts MATCH ?)"
                     " THEN 1.5 ELSE 0.0 END)";
        score.bindings.emplace_back(*search.strict);
    }
    return score;
}

BoundSQL conditions(const Search& search) {
    std::vector<BoundSQL> all;
    if (search.match) all.push_back({"fts MATCH ?", {*search.match}});
    for (const std::string& expression : search.negated) {
        all.push_back(filter::notMatching(expression));
    }
    all.insert(all.end(), search.filters.begin(), search.filters.end());

    BoundSQL where;
    for (const BoundSQL& condition : all) {
        where.sql += where.sql.empty() ? "\nWHERE " : " AND ";
        append(where, condition);
    }
    return where;
}

/// `relevance` is what a search for words, or a browse, sorts by; `table` has the other column.
BoundSQL order(SearchSort sort, const BoundSQL& relevance, const std::string& table = "docs") {
    if (sort == SearchSort::newest) return {"\nORDER BY " + table + ".updated DESC"};
    if (sort == SearchSort::oldest) return {"\nORDER BY " + table + ".updated ASC"};
    BoundSQL order{"\nORDER BY "};
    append(order, relevance);
    return order;
}

void appendLimit(BoundSQL& statement, std::int64_t limit) {
    append(statement, {"\nLIMIT ?", {limit}});
}

BoundSQL matchStatement(const Search& search, Instant now) {
    const BoundSQL score = tesserine::score(search, now);
    BoundSQL statement{
        "SELECT docs.uid, docs.kind, docs.title, docs.notebook, docs.tags, docs.created,\n"
        "       docs.updated, docs.has_attach,\n"
        "       "
        + snippet("fts", 1, 14) + ",\n       "};
    append(statement, score);
    statement.sql += ",\n       " + highlighted("fts", 0) + ", docs.latitude, docs.longitude,\n"
                     + "       " + highlighted("fts", 2) + ",\n       " + highlighted("fts", 3)
                     + ",\n       " + highlighted("fts", 4)
                     + ",\n       docs.trashed, docs.favorite\n"
                       "FROM fts JOIN docs ON docs.rowid = fts.rowid";
    append(statement, conditions(search));
    BoundSQL relevance = score;
    relevance.sql += ", docs.updated DESC, docs.uid ASC";
    append(statement, order(search.sort, relevance));
    appendLimit(statement, search.limit);
    return statement;
}

/// Whether an expression asks for whole words only, not for the beginnings of some nor for words
/// next to each other, as those of "wi-fi" are.
bool holdsOnlyWords(std::string_view expression) {
    bool isQuoted = false;
    return std::ranges::all_of(expression, [&](char c) {
        if (c == '"') isQuoted = !isQuoted;
        if (!isQuoted || c == '"') return c != '*';
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
               || static_cast<unsigned char>(c) >= 0x80;
    });
}

/// The score, without looking again for what matched already.
BoundSQL quickScore(const Search& search, Instant now) {
    if (search.strict != search.match) return score(search, now);
    Search others = search;
    others.strict.reset();
    BoundSQL score = tesserine::score(others, now);
    score.sql += " - 1.5";
    return score;
}

BoundSQL browseStatement(const Search& search) {
    BoundSQL statement{
        "SELECT docs.uid, docs.kind, docs.title, docs.notebook, docs.tags, docs.created,\n"
        "       docs.updated, docs.has_attach, '', 0.0, docs.title, docs.latitude, docs.longitude,\n"
        "       '', '', '', docs.trashed, docs.favorite\n"
        "FROM docs"};
    append(statement, conditions(search));
    append(
        statement,
        order(
            search.sort,
            {"(CASE WHEN docs.favorited > 0 THEN docs.favorited ELSE docs.updated END) DESC, "
             "docs.uid ASC"}));
    appendLimit(statement, search.limit);
    return statement;
}

}  // namespace

BoundSQL searchStatement(const Search& search, Instant now) {
    return search.match ? matchStatement(search, now) : browseStatement(search);
}

bool isQuickerRankedFirst(const Search& search) {
    constexpr std::int64_t largestLimit = 500;
    return search.match && search.limit <= largestLimit && holdsOnlyWords(*search.match);
}

BoundSQL rankedFirstStatement(const Search& search, Instant now) {
    BoundSQL statement{
        "SELECT top.uid, top.kind, top.title, top.notebook, top.tags, top.created,\n"
        "       top.updated, top.has_attach,\n"
        "       "
        + bodyPart() + ",\n       top.score,\n       " + highlighted("fts", 0)
        + ", top.latitude, top.longitude,\n       " + highlighted("fts", 2) + ",\n       "
        + highlighted("fts", 3) + ",\n       " + highlighted("fts", 4)
        + ",\n       top.trashed, top.favorite\n"
          "FROM fts CROSS JOIN (\n"
          "SELECT docs.rowid AS place, docs.uid AS uid, docs.kind AS kind, docs.title AS title,\n"
          "       docs.notebook AS notebook, docs.tags AS tags, docs.created AS created,\n"
          "       docs.updated AS updated, docs.has_attach AS has_attach,\n"
          "       docs.latitude AS latitude, docs.longitude AS longitude,\n"
          "       docs.trashed AS trashed, docs.favorite AS favorite,\n       "};
    append(statement, quickScore(search, now));
    statement.sql += " AS score\nFROM fts JOIN docs ON docs.rowid = fts.rowid";
    append(statement, conditions(search));
    append(statement, order(search.sort, {"score, docs.updated DESC, docs.uid ASC"}));
    appendLimit(statement, search.limit);
    // Without the plus, SQLite would run the match anew for each of the rows.
    append(statement, {"\n) AS top ON top.place = +fts.rowid\nWHERE fts MATCH ?", {*search.match}});
    append(statement, order(search.sort, {"top.score, top.updated DESC, top.uid ASC"}, "top"));
    return statement;
}

BoundSQL countStatement(const Search& search) {
    // Without an order, SQLite would start at the index on the kind and run the match for each row;
    // a cross join is taken from left to right.
    BoundSQL statement{"SELECT COUNT(*) FROM (SELECT 1 FROM "};
    statement.sql += search.match ? "fts CROSS JOIN docs ON docs.rowid = fts.rowid" : "docs";
    append(statement, conditions(search));
    appendLimit(statement, search.limit);
    statement.sql += ")";
    return statement;
}

BoundSQL attachmentStatement(const std::string& expression, const std::vector<std::string>& uids) {
    BoundSQL statement{
        "SELECT atts.note_uid, atts.uid, atts.filename, atts.mime,\n"
        "       "
            + snippet("afts", 1, 18) + ",\n       " + highlighted("afts", 0)
            + ",\n       bm25(afts, 4.0, 1.0, 0.0)\n"
              "FROM afts JOIN atts ON atts.rowid = afts.rowid\n"
              "WHERE afts MATCH ? AND atts.note_uid IN (",
        {expression}};
    for (std::size_t i = 0; i < uids.size(); ++i) {
        statement.sql += i == 0 ? "?" : ",?";
        statement.bindings.emplace_back(uids[i]);
    }
    statement.sql += ")\nORDER BY bm25(afts, 4.0, 1.0, 0.0)";
    return statement;
}

}  // namespace tesserine
