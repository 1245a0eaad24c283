#include "search/QueryCompiler.h"

#include "base/Text.h"
#include "search/QueryParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace tesserine {
namespace {

class Vocabulary final : public QueryVocabulary {
public:
    std::vector<std::string> termsContaining(const std::string& part) override {
        if (part == "メモ") return {"日本語のメモ", "メモ"};
        if (part == "voic") return {"invoice", "voice"};
        return {};
    }
    std::vector<std::string> tagsBelow(const std::string& name) override {
        if (text::lowercased(name) == "work") return {"café", "50%"};
        return {};
    }
};

class Library final : public QueryLibrary {
public:
    std::vector<std::string> documents(const LibraryCondition& condition) override {
        return {
            "K" + std::to_string(static_cast<int>(condition.kind)) + " "
            + std::to_string(condition.mostUrgent) + std::to_string(condition.leastUrgent)};
    }
    Notebooks notebooks(std::string_view name, Depth depth) override {
        if (name == "Twins") return {.names = {"Plans"}, .notes = {{"A", "B"}}};
        if (name != "Work") return {};
        if (depth == Depth::itself) return {.names = {"Work"}};
        return {.names = {"Work", "Pläne"}};
    }
};

class QueryCompilerTest : public testing::Test {
protected:
    CompiledQuery compiled(std::string_view query) {
        return QueryCompiler(
                   {.vocabulary = vocabulary_,
                    .library = &library_,
                    .now = *Instant::parseISO("2026-03-14T09:15:00Z"),
                    .calendar = calendar_},
                   synonyms_)
            .compile(parseQuery(query), 10);
    }

    /// The expression, with the columns of ordinary words written `w`.
    std::string match(std::string_view query) {
        return shortened(compiled(query).search.match.value_or("none"));
    }
    static std::string shortened(std::string expression) {
        const std::string columns(match::writtenColumns);
        for (auto at = expression.find(columns); at != std::string::npos;
             at = expression.find(columns)) {
            expression.replace(at, columns.size(), "w");
        }
        return expression;
    }
    /// The conditions after the one that leaves the trash out, with their bindings.
    std::string filters(std::string_view query) {
        std::string line;
        for (const BoundSQL& filter : compiled(query).search.filters) {
            if (filter.sql == "docs.trashed = 0") continue;
            line += (line.empty() ? "" : " & ") + filter.sql;
            for (const SQLValue& value : filter.bindings) {
                line += " <" + shown(value) + ">";
            }
        }
        return line;
    }
    static std::string shown(const SQLValue& value) {
        if (const auto* text = std::get_if<std::string>(&value)) return *text;
        return std::to_string(std::llround(std::get<double>(value)));
    }

    Vocabulary vocabulary_;
    Library library_;
    Calendar calendar_{"UTC", 2};
    SearchSynonyms synonyms_{{{"invoice", "bill", "credit note"}}};
};

struct CompilerCase {
    const char* query;
    const char* expected;
};

TEST_F(QueryCompilerTest, QuotesEveryWord) {
    for (const auto& [query, expected] : {
             CompilerCase{"red wine", R"((w : "red" AND w : "wine"))"},
             CompilerCase{"red OR wine*", R"((w : "red" OR w : "wine"*))"},
             CompilerCase{R"("red \"wine\" OR")", R"(w : "red ""wine"" OR")"},
             CompilerCase{R"((a OR "b c") d)", R"(((w : "a" OR w : "b c") AND w : "d"))"},
             CompilerCase{
                 R"(title:x,"y z" body:v*)", R"((title : ("x" OR "y z") AND body : "v"*))"},
             CompilerCase{"*voic*", R"(w : ("invoice" OR "voice"))"},
             CompilerCase{"メモ", R"(w : ("日本語のメモ" OR "メモ"))"},
             CompilerCase{"INVOICE", R"(w : ("INVOICE" OR "bill" OR "credit note"))"},
             CompilerCase{R"("invoice")", R"(w : "invoice")"},
         }) {
        EXPECT_EQ(match(query), expected) << query;
    }
}

TEST_F(QueryCompilerTest, FindsNumbersAndDatesHoweverTheyAreWritten) {
    for (const auto& [query, expected] : {
             CompilerCase{
                 "1,234.50", R"((keys : "tsn1234p50" OR keys : "tsn1234p5" OR w : "1,234.50"))"},
             CompilerCase{"$9,90.", R"((keys : "tsn9p90" OR keys : "tsn9p9" OR w : "$9,90."))"},
             CompilerCase{"1234", R"((keys : "tsn1234" OR keys : "tsn1234p00" OR w : "1234"))"},
             CompilerCase{"2025-01-15", R"((keys : "tsx20250115" OR w : "2025-01-15"))"},
             CompilerCase{"1/2025", R"((keys : "tsm202501" OR w : "1/2025"))"},
             CompilerCase{
                 "march 2025",
                 R"((keys : "tsm202503" OR (w : "march" AND (keys : "tsy2025" OR )"
                 R"(keys : "tsn2025" OR keys : "tsn2025p00" OR w : "2025"))))"},
             CompilerCase{"rev-2025-01-15", R"(w : "rev-2025-01-15")"},
             CompilerCase{
                 R"(amount:9.9 account:"1234 5678")",
                 R"((keys : ("tsn9p9" OR "tsn9p90") AND keys : "tsd12345678"))"},
             CompilerCase{R"("1,234.50")", R"(w : "1,234.50")"},
             CompilerCase{"tsy2025", R"(w : "tsy2025")"},
         }) {
        EXPECT_EQ(match(query), expected) << query;
    }
    EXPECT_THAT(
        match("plan 15 January 2025 x"),
        testing::StartsWith(R"((w : "plan" AND (keys : "tsx20250115" OR (()"));
    EXPECT_THAT(match("1234 5678 9012"), testing::StartsWith(R"((keys : "tsd123456789012" OR ()"));
}

TEST_F(QueryCompilerTest, RanksTheTypedWordsInTheirOrderHigher) {
    for (const auto& [query, expected] : {
             CompilerCase{"annual report", R"(w : "annual report")"},
             CompilerCase{"inv*", R"(w : "inv")"},
             CompilerCase{R"(annual "x y" report -z tag:a)", R"(w : "annual report")"},
             CompilerCase{R"("x y")", "none"},
             CompilerCase{"a OR b", "none"},
         }) {
        EXPECT_EQ(shortened(compiled(query).search.strict.value_or("none")), expected) << query;
    }
}

TEST_F(QueryCompilerTest, LeavesOutWhatIsNegated) {
    const auto negated = compiled(R"(a -b -"c d" -(e f) -(g OR h))").search.negated;
    std::vector<std::string> lines;
    lines.reserve(negated.size());
    for (const std::string& expression : negated) {
        lines.push_back(shortened(expression));
    }
    EXPECT_THAT(
        lines,
        testing::ElementsAre(
            R"(w : "b")", R"(w : "c d")", R"((w : "e" AND w : "f"))", R"((w : "g" OR w : "h"))"));
}

TEST_F(QueryCompilerTest, StatesConditions) {
    const std::string tag = "('\x1F' || docs.tags_fold || '\x1F') LIKE ? ESCAPE '\\'";
    const std::string book = R"(docs.notebook_fold LIKE ? ESCAPE '\')";
    const std::string ids = "docs.uid IN (SELECT value FROM json_each(?))";
    const std::string text = "docs.rowid IN (SELECT rowid FROM fts WHERE fts MATCH ?)";
    struct Line {
        const char* query;
        std::string expected;
    };
    const std::vector<Line> table{
        {"tag:Work",
         "(" + tag + " OR " + tag + " OR " + tag
             + ") <%\x1Fwork\x1F%> <%\x1F"
               "cafe\x1F%>"
               " <%\x1F"
               "50\\%\x1F%>"},
        {"tag:=Work", tag + " <%\x1Fwork\x1F%>"},
        {"-#a_b",
         "NOT (" + tag
             + ") <%\x1F"
               "a\\_b\x1F%>"},
        {"tag:pro* tag:none", tag + " <%\x1Fpro%\x1F%> & " + tag + " <%\x1F\x1F%>"},
        {"notebook:Work", "(" + book + " OR " + book + ") <work> <plane>"},
        {"in:=Work", book + " <work>"},
        {R"(in:"Home Ü" notebook:none)", book + " <home u> & " + book + " <>"},
        {"in:Twins", ids + R"( <["A","B"]>)"},
        {"created:2025", "(docs.created >= ? AND docs.created < ?) <1735689600> <1767225600>"},
        {"created:7d before:2025-01-15 after:2025",
         "docs.created >= ? <1772841600> & docs.created < ? <1736899200> & "
         "docs.created >= ? <1767225600>"},
        {"edited:2025-02 updated:..2024",
         "docs.updated >= ? <1738368000> & docs.updated < ? "
         "<1735689600>"},
        {"created:>2025 created:<=2024",
         "docs.created >= ? <1767225600> & docs.created < ? "
         "<1735689600>"},
        {"has:pdf,text", R"((docs.types_fold LIKE ? ESCAPE '\' OR docs.att_text > 0) <%pdf%>)"},
        {"is:task is:pinned", "docs.kind = ? <task> & docs.favorite = 1"},
        {"in:trash", "docs.trashed = 1"},
        {"in:anywhere", ""},
        {"is:overdue p1", ids + R"( <["K6 14"]> & )" + ids + R"( <["K9 11"]>)"},
        {"priority:>=2 priority:1..3", ids + R"( <["K9 24"]> & )" + ids + R"( <["K9 13"]>)"},
        {"file:scan",
         "docs.uid IN (SELECT atts.note_uid FROM afts JOIN atts ON atts.rowid = "
         R"(afts.rowid WHERE afts MATCH ?) <filename : "scan">)"},
        {"near:10,20,111.19493km",
         "(docs.latitude IS NOT NULL AND docs.longitude IS NOT NULL AND docs.latitude BETWEEN "
         "? AND ? AND docs.longitude BETWEEN ? AND ?) <9> <11> <19> <21>"},
        {"a OR is:task", "(" + text + R"( OR docs.kind = ?) <w : "a"> <task>)"},
    };
    for (const auto& [query, expected] : table) {
        EXPECT_EQ(shortened(filters(query)), expected) << query;
    }
    EXPECT_EQ(compiled("in:anywhere").search.filters.size(), 0U);
    EXPECT_EQ(compiled("a sort:newest").search.sort, SearchSort::newest);
}

TEST_F(QueryCompilerTest, SaysWhatItCannotUnderstand) {
    EXPECT_THAT(
        compiled("amount:>9.90").hints,
        testing::ElementsAre("Amounts and account numbers can only be looked for exactly."));
    for (const auto& [query, hint] : {
             CompilerCase{"created:soon a", "“soon” is no date, so it was left out."},
             CompilerCase{"is:nice a", "“is:” knows nothing called “nice”, so it was left out."},
             CompilerCase{"near:91,0,1km", "“near:91,0,1km” is no place, so it was left out."},
             CompilerCase{"near:1,2,3", "“near:1,2,3” is no place, so it was left out."},
             CompilerCase{
                 "priority:high", "“high” is no priority from 1 to 4, so it was left out."},
             CompilerCase{"amount:much a", "“amount:much” holds no number, so it was left out."},
         }) {
        const CompiledQuery found = compiled(query);
        EXPECT_THAT(found.hints, testing::ElementsAre(hint));
        EXPECT_EQ(filters(query), "") << query;
    }
}

TEST_F(QueryCompilerTest, LooksIntoFilesForTheSameWords) {
    const CompiledQuery found = compiled("2025-01-15 scan title:x tag:y -z");
    EXPECT_EQ(
        found.attachmentsWithAll,
        R"(((keys : "tsx20250115" OR {filename body} : "2025-01-15") AND {filename body} : "scan"))");
    EXPECT_EQ(
        found.attachmentsWithAny,
        R"(((keys : "tsx20250115" OR {filename body} : "2025-01-15") OR {filename body} : "scan"))");
    EXPECT_FALSE(compiled("title:x is:task").attachmentsWithAll);
}

}  // namespace
}  // namespace tesserine
