#include "search/QueryParser.h"

#include "base/Text.h"
#include "tests/support/SeededRandom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace tesserine {
namespace {

std::string_view nameOf(QueryField field) {
    if (field == QueryField::scope) return "scope";
    const auto fields = queryFields();
    return std::ranges::find(fields, field, &QueryFieldInfo::field)->name;
}

std::string shown(const QueryText& text) {
    switch (text.form) {
    case QueryText::Form::word: return text.text;
    case QueryText::Form::prefix: return text.text + "*";
    case QueryText::Form::part: return "*" + text.text + "*";
    case QueryText::Form::phrase: return "'" + text.text + "'";
    }
    return {};
}

std::string shown(const QueryFilter& filter) {
    static constexpr const char* signs[] = {"", "=", ">=", "<=", ">", "<"};
    std::string line = "[" + std::string(nameOf(filter.field)) + ":"
                       + signs[static_cast<std::size_t>(filter.comparison)];
    for (const QueryValue& value : filter.values) {
        if (&value != filter.values.data()) line += ",";
        line += value.isQuoted ? "'" + value.text + "'" : value.text;
        if (value.upTo) line += ".." + *value.upTo;
    }
    return line + "]";
}

/// The tree as one line: words as they are, filters in brackets, `(and a b)`, `(or a b)`, `-a`.
std::string shown(const QueryNode& node) {
    if (node.kind == QueryNode::Kind::text) return shown(node.text);
    if (node.kind == QueryNode::Kind::filter) return shown(node.filter);
    if (node.kind == QueryNode::Kind::negation) return "-" + shown(node.children.front());
    std::string line = node.kind == QueryNode::Kind::any ? "(or" : "(and";
    for (const QueryNode& child : node.children) {
        line += " " + shown(child);
    }
    return line + ")";
}

std::string read(
    std::string_view text, QueryScanner::LastWord lastWord = QueryScanner::LastWord::asTyped) {
    std::string line;
    for (const QueryNode& child : parseQuery(text, lastWord).root.children) {
        line += (line.empty() ? "" : " ") + shown(child);
    }
    return line;
}

std::size_t depth(const QueryNode& node) {
    std::size_t below = 0;
    for (const QueryNode& child : node.children) {
        below = std::max(below, depth(child));
    }
    return below + 1;
}

struct ParserCase {
    const char* query;
    const char* tree;
};

TEST(QueryParser, JoinsByAndBeforeOr) {
    for (const auto& [query, tree] : {
             ParserCase{"red wine", "red wine"},
             ParserCase{"red AND wine & cheese", "red wine cheese"},
             ParserCase{"red OR white wine", "(or red (and white wine))"},
             ParserCase{"(red OR white) wine", "(or red white) wine"},
             ParserCase{"red|white", "(or red white)"},
             ParserCase{"a OR (b OR c)", "(or a b c)"},
             ParserCase{"a (b (c d))", "a b c d"},
             ParserCase{"salt or pepper", "salt or pepper"},  // only capitals are operators
             ParserCase{"AT&T", "AT&T"},
             ParserCase{"-draft !old NOT new", "-draft -old -new"},
             ParserCase{"--a ---b", "a -b"},
             ParserCase{"-(a b) -(c OR d)", "-(and a b) -(or c d)"},
             ParserCase{"e-mail well-known!", "e-mail well-known!"},
         }) {
        EXPECT_EQ(read(query), tree) << query;
    }
}

TEST(QueryParser, ReadsWordsPhrasesAndTags) {
    for (const auto& [query, tree] : {
             ParserCase{"inv*", "inv*"},
             ParserCase{"*voic*", "*voic*"},
             ParserCase{"*ice", "*ice*"},
             ParserCase{R"("annual report")", "'annual report'"},
             ParserCase{R"("say \"no\" now")", R"('say "no" now')"},
             ParserCase{R"("left open)", "'left open'"},
             ParserCase{R"(a"b c"d)", "a 'b c' d"},
             ParserCase{R"(#work #"to do" C#)", "[tag:'work'] [tag:'to do'] C#"},
             ParserCase{"#work, #home", "[tag:'work'] [tag:'home']"},
         }) {
        EXPECT_EQ(read(query), tree) << query;
    }
}

TEST(QueryParser, ReadsFields) {
    for (const auto& [query, tree] : {
             ParserCase{"tag:work", "[tag:work]"},
             ParserCase{"TAG:work label:home", "[tag:work] [tag:home]"},
             ParserCase{"tag: work", "[tag:work]"},
             ParserCase{"tag:=work -tag:a,b", "[tag:=work] -[tag:a,b]"},
             ParserCase{
                 R"(in:"Work / Plans" in:trash in:"trash")",
                 "[notebook:'Work / Plans'] [scope:trash] [notebook:'trash']"},
             ParserCase{
                 "created:2025-01..2025-03 since:>=7d due:..today",
                 "[created:2025-01..2025-03] [edited:>=7d] [due:..today]"},
             ParserCase{
                 "amount:1,234.50 near:52.5,13.4,10km", "[amount:1,234.50] [near:52.5,13.4,10km]"},
             ParserCase{"(is:open)", "[is:open]"},
             ParserCase{"https://example.org/a?b=c at 10:30", "https://example.org/a?b=c at 10:30"},
             ParserCase{"file:///home file:a.pdf", "file:///home [file:a.pdf]"},
             // While someone types, what is not there yet filters nothing.
             ParserCase{"tag:", ""},
             ParserCase{"tag: is:open", "[is:open]"},
             ParserCase{"tag: OR b", "b"},
             ParserCase{R"(tag:"" tag:,a)", "[tag:a]"},
         }) {
        EXPECT_EQ(read(query), tree) << query;
    }
}

TEST(QueryParser, LeavesOutWhatMakesNoSense) {
    for (const char* nothing :
         {"",   " \t\n", R"(")", R"("")", "(((",      ")))",     "()", "-",
          "--", "*",     "**",   "#",     "OR",       "NOT",     "|",  "& AND",
          "!?", "—",     "🎉",    "tag:",  R"(- "?")", "NOT (OR)"}) {
        EXPECT_EQ(read(nothing), "") << nothing;
    }
    for (const auto& [query, tree] : {
             ParserCase{"NEAR(a b)", "NEAR a b"},
             ParserCase{"a OR", "a"},
             ParserCase{"OR a", "a"},
             ParserCase{"a (b", "a b"},
             ParserCase{"a) b", "a b"},
             ParserCase{"-? a", "a"},  // the minus goes with what it stood before
             ParserCase{"-() a", "a"},
             ParserCase{"^title {x} a:b", "^title {x} a:b"},
         }) {
        EXPECT_EQ(read(query), tree) << query;
    }
}

TEST(QueryParser, SaysWhatItLeftOutOrMisread) {
    EXPECT_THAT(
        parseQuery(R"(author:smith 10:30 C:\x http://a.b)").hints,
        testing::ElementsAre("“author:” is no field, so it was looked for as text."));
    std::string many;
    for (int i = 0; i < 40; ++i) {
        many += "w" + std::to_string(i) + " ";
    }
    const Query query = parseQuery(many);
    EXPECT_EQ(query.root.children.size(), maximumQueryTerms);
    EXPECT_THAT(query.hints, testing::ElementsAre("Only the first 32 terms were used."));
    EXPECT_TRUE(parseQuery(many.substr(0, many.find("w32"))).hints.empty());
}

TEST(QueryParser, TheWordBeingTypedIsABeginning) {
    const auto typing = QueryScanner::LastWord::mayGoOn;
    for (const auto& [query, tree] : {
             ParserCase{"red win", "red win*"},
             ParserCase{"red win ", "red win"},
             ParserCase{R"("red win)", "'red win'"},
             ParserCase{"red -win", "red -win*"},
             ParserCase{"tag:wi", "[tag:wi]"},
             ParserCase{"title:wi", "[title:wi*]"},
             ParserCase{"red (win)", "red win"},
         }) {
        EXPECT_EQ(read(query, typing), tree) << query;
    }
}

TEST(QueryParser, AnswersEveryTextSoon) {
    test::SeededRandom random(7);
    constexpr std::string_view pieces[] = {
        R"(")", "(",        ")", "-", "!",    "*",    "#", ":", ",", "..",    " ", "OR ", "NOT ",
        "tag:", "in:trash", "a", "é", "日本", R"(\)", "%", "|", "&", "near:", ">", "1,2", "\u3000"};
    for (int i = 0; i < 2'000; ++i) {
        std::string text;
        for (std::uint64_t j = random.below(40); j > 0; --j) {
            text += pieces[random.below(std::size(pieces))];
        }
        SCOPED_TRACE(text);
        EXPECT_LE(depth(parseQuery(text).root), 3 * maximumQueryTerms);
    }
    for (const char* piece :
         {"(", "-", R"(")", "a", "a ", "tag:", "-(", R"(\")", ",", "tag:,", "* "}) {
        std::string text;
        while (text.size() < 1'000'000) {
            text += piece;
        }
        EXPECT_LE(depth(parseQuery(text).root), 3 * maximumQueryTerms) << piece;
    }
}

}  // namespace
}  // namespace tesserine
