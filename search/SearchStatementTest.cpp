#include "search/SearchStatement.h"

#include "search/SearchFilters.h"

#include <gtest/gtest.h>

namespace tesserine {

std::ostream& operator<<(std::ostream& out, const BoundSQL& statement) {
    out << statement.sql << "\n--";
    for (const SQLValue& value : statement.bindings) {
        std::visit([&](const auto& shown) { out << " " << shown; }, value);
    }
    return out;
}

namespace {

const Instant now = Instant::fromSeconds(1'773'223'200);

TEST(SearchStatement, RanksMatchesAndBindsTheScoreTwice) {
    const Search search{
        .match = R"("a")",
        .strict = R"("a b")",
        .negated = {R"("c")"},
        .filters = {filter::isTrashed(false), filter::isKind(SearchKind::note)},
        .limit = 20};
    const std::string score =
        "bm25(fts, 12.0, 3.0, 6.0, 4.0, 2.0, 0.0) + (CASE WHEN docs.trashed = 1 THEN 6.0 ELSE 0.0 "
        "END) - (CASE WHEN docs.favorite = 1 THEN 0.4 ELSE 0.0 END) - (CASE WHEN docs.updated > ? "
        "THEN 0.5 WHEN docs.updated > ? THEN 0.3 WHEN docs.updated > ? THEN 0.1 ELSE 0.0 END) - "
        "(CASE WHEN docs.rowid IN (SELECT rowid FROM fts WHERE fts MATCH ?) THEN 1.5 ELSE 0.0 END)";
    const std::string open = "\xE2\x81\xA2[";
    const std::string close = "]\xE2\x81\xA2";
    const std::string marks = "'" + open + "', '" + close + "'";
    const double month = 1'773'223'200.0 - 2'592'000;
    const double year = 1'773'223'200.0 - 31'536'000;
    const double threeYears = 1'773'223'200.0 - 94'608'000;
    const BoundSQL expected{
        "SELECT docs.uid, docs.kind, docs.title, docs.notebook, docs.tags, docs.created,\n"
        "       docs.updated, docs.has_attach,\n"
        "       snippet(fts, 1, "
            + marks + ", '…', 14),\n       " + score + ",\n       highlight(fts, 0, " + marks
            + "), docs.latitude, docs.longitude,\n       highlight(fts, 2, " + marks
            + "),\n       highlight(fts, 3, " + marks + "),\n       highlight(fts, 4, " + marks
            + "),\n       docs.trashed, docs.favorite\n"
              "FROM fts JOIN docs ON docs.rowid = fts.rowid\n"
              "WHERE fts MATCH ? AND docs.rowid NOT IN (SELECT rowid FROM fts WHERE fts MATCH ?)"
              " AND docs.trashed = 0 AND docs.kind = ?\n"
              "ORDER BY "
            + score + ", docs.updated DESC, docs.uid ASC\nLIMIT ?",
        {month,
         year,
         threeYears,
         R"("a b")",
         R"("a")",
         R"("c")",
         "note",
         month,
         year,
         threeYears,
         R"("a b")",
         std::int64_t{20}}};
    EXPECT_EQ(searchStatement(search, now), expected);
}

TEST(SearchStatement, BrowsesFavouritesByTheTimeTheyWereMade) {
    Search browse{.filters = {filter::isTrashed(false)}, .limit = 5};
    const std::string select =
        "SELECT docs.uid, docs.kind, docs.title, docs.notebook, docs.tags, docs.created,\n"
        "       docs.updated, docs.has_attach, '', 0.0, docs.title, docs.latitude, docs.longitude,"
        "\n       '', '', '', docs.trashed, docs.favorite\nFROM docs\nWHERE docs.trashed = 0\n";
    EXPECT_EQ(
        searchStatement(browse, now),
        (BoundSQL{
            select
                + "ORDER BY (CASE WHEN docs.favorited > 0 THEN docs.favorited ELSE docs.updated END"
                  ") DESC, docs.uid ASC\nLIMIT ?",
            {std::int64_t{5}}}));
    browse.sort = SearchSort::oldest;
    EXPECT_EQ(
        searchStatement(browse, now),
        (BoundSQL{select + "ORDER BY docs.updated ASC\nLIMIT ?", {std::int64_t{5}}}));
    browse.sort = SearchSort::newest;
    EXPECT_EQ(
        searchStatement(browse, now),
        (BoundSQL{select + "ORDER BY docs.updated DESC\nLIMIT ?", {std::int64_t{5}}}));
}

TEST(SearchStatement, CountsNoFurtherThanItMust) {
    EXPECT_EQ(
        countStatement({.match = R"("a")", .filters = {filter::hasAttachmentText()}, .limit = 3}),
        (BoundSQL{
            "SELECT COUNT(*) FROM (SELECT 1 FROM fts CROSS JOIN docs ON docs.rowid = fts.rowid\n"
            "WHERE fts MATCH ? AND docs.att_text > 0\nLIMIT ?)",
            {R"("a")", std::int64_t{3}}}));
}

TEST(SearchStatement, FindsTheAttachmentsOfTheNotesShown) {
    const std::string marks = "'\xE2\x81\xA2[', ']\xE2\x81\xA2'";
    EXPECT_EQ(
        attachmentStatement(R"("a")", {"X", "Y"}),
        (BoundSQL{
            "SELECT atts.note_uid, atts.uid, atts.filename, atts.mime,\n       snippet(afts, 1, "
                + marks + ", '…', 18),\n       highlight(afts, 0, " + marks
                + "),\n       bm25(afts, 4.0, 1.0, 0.0)\n"
                  "FROM afts JOIN atts ON atts.rowid = afts.rowid\n"
                  "WHERE afts MATCH ? AND atts.note_uid IN (?,?)\n"
                  "ORDER BY bm25(afts, 4.0, 1.0, 0.0)",
            {R"("a")", "X", "Y"}}));
}

TEST(SearchFilters, StateTheirConditions) {
    const auto day = Instant::fromSeconds(86'400);
    struct Case {
        BoundSQL filter;
        BoundSQL expected;
    };
    for (const auto& [filter, expected] : std::vector<Case>{
             {filter::created({.begin = Instant{}, .end = day}),
              {"(docs.created >= ? AND docs.created < ?)", {0.0, 86'400.0}}},
             {filter::created({.end = day}), {"docs.created < ?", {86'400.0}}},
             {filter::updatedSince(day), {"docs.updated >= ?", {86'400.0}}},
             {filter::inNotebook("work"), {R"(docs.notebook_fold LIKE ? ESCAPE '\')", {"work"}}},
             {filter::negation(filter::inNotebook("work")),
              {R"(NOT (docs.notebook_fold LIKE ? ESCAPE '\'))", {"work"}}},
             {filter::carriesTag("work"),
              {"('\x1F' || docs.tags_fold || '\x1F') LIKE ? ESCAPE '\\'", {"%\x1Fwork\x1F%"}}},
             {filter::hasType(R"(1_0%\)"),
              {R"(docs.types_fold LIKE ? ESCAPE '\')", {R"(%1\_0\%\\%)"}}},
             {filter::isOneOf({"A", "B"}),
              {"docs.uid IN (SELECT value FROM json_each(?))", {R"(["A","B"])"}}},
             {filter::anyOf({filter::isKind(SearchKind::note), filter::hasAttachment()}),
              {"(docs.kind = ? OR docs.has_attach = 1)", {"note"}}},
         }) {
        EXPECT_EQ(filter, expected);
    }
}

TEST(SearchFilters, BoxesMayLieAcrossTheMeridian) {
    const auto longitudes = [](double west, double east) {
        BoundSQL box = filter::insideBox({.south = -1, .north = 1, .west = west, .east = east});
        return box.sql.substr(box.sql.find("docs.latitude BETWEEN ? AND ? AND ") + 34) + " "
               + testing::PrintToString(std::get<double>(box.bindings[2])) + " "
               + testing::PrintToString(std::get<double>(box.bindings[3]));
    };
    const std::string westward =
        "(docs.longitude BETWEEN -180 AND ? OR docs.longitude BETWEEN ? AND 180)) ";
    const std::string eastward =
        "(docs.longitude BETWEEN ? AND 180 OR docs.longitude BETWEEN -180 AND ?)) ";
    EXPECT_EQ(longitudes(10, 20), "docs.longitude BETWEEN ? AND ?) 10 20");
    EXPECT_EQ(longitudes(170, -170), eastward + "170 -170");
    EXPECT_EQ(longitudes(175, 190), eastward + "175 -170");
    EXPECT_EQ(longitudes(-190, -175), westward + "-175 170");
}

}  // namespace
}  // namespace tesserine
