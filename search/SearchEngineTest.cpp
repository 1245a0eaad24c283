#include "search/SearchEngine.h"

#include "base/Random.h"
#include "search/SearchStatement.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine {
namespace {

class SearchEngineTest : public testing::Test {
protected:
    SearchEngineTest() {
        add({.title = "Tax return", .body = "The invoice of the annual report", .tags = {"tax"}});
        add({.title = "Rent", .body = "paid 1,234.50 on January 15, 2025", .notebook = "Work"});
        add({.title = "Account", .body = "No. 1234 5678 9012 at the bank"});
        add({.title = "日本語のメモ", .body = "東京で会議"});
        add({.title = "Coffee", .body = "beans 9.90 and milk"});
        add({.title = "Old plan", .body = "invoice draft", .isTrashed = true});
        add({.kind = SearchKind::task, .title = "Pay the invoice", .tags = {"tax"}});
        add(
            {.title = "Scans",
             .body = "see the file",
             .attachmentText = "a lease contract from 2019",
             .attachmentTypes = {"pdf"},
             .hasAttachment = true,
             .attachments = {
                 {.id = Uuid::random(random_),
                  .filename = "lease.pdf",
                  .mimeType = "application/pdf",
                  .text = "a lease contract from 2019"},
                 {.id = Uuid::random(random_), .filename = "cat.png"}}});
        index_.replaceTagTree({{"money", {}}, {"tax", "money"}});
    }

    void add(IndexDocument document) {
        document.id = Uuid::random(random_);
        document.createdAt = clock_.now() - Instant::Duration(86'400);
        document.updatedAt = document.createdAt;
        index_.upsert(document);
    }

    SearchResponse search(
        const std::string& text,
        QueryScanner::LastWord lastWord = QueryScanner::LastWord::asTyped) {
        return engine_.search({.text = text, .lastWord = lastWord});
    }
    std::string titles(const SearchResponse& response) const {
        std::vector<std::string> all;
        for (const SearchResult& result : response.results) {
            all.push_back(result.title);
        }
        std::ranges::sort(all);
        std::string line;
        for (const std::string& title : all) {
            line += (line.empty() ? "" : ", ") + title;
        }
        return line;
    }
    std::string found(const std::string& text) { return titles(search(text)); }

    test::TemporaryFolder folder_;
    test::SeededRandom random_{3};
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    Calendar calendar_{"UTC", 2};
    SearchIndex index_{folder_ / "Search.sqlite"};
    SearchEngine engine_{{.index = index_, .clock = clock_, .calendar = calendar_}};
};

std::string plain(std::string text) {
    for (const auto& [from, to] : {std::pair{marker::open, "["}, std::pair{marker::close, "]"}}) {
        for (auto at = text.find(from); at != std::string::npos; at = text.find(from)) {
            text.replace(at, from.size(), to);
        }
    }
    return text;
}

struct EngineCase {
    const char* query;
    const char* titles;
};

TEST_F(SearchEngineTest, AnswersTheWholeLanguage) {
    for (const auto& [query, titles] : {
             EngineCase{"invoice", "Pay the invoice, Tax return"},
             EngineCase{"INVO*", "Pay the invoice, Tax return"},
             EngineCase{"invoice is:note", "Tax return"},
             EngineCase{"invoice -report", "Pay the invoice"},
             EngineCase{"\"annual report\"", "Tax return"},
             EngineCase{"\"report annual\"", ""},
             EngineCase{"coffee OR rent", "Coffee, Rent"},
             EngineCase{"tag:money", "Pay the invoice, Tax return"},
             EngineCase{"tag:=money", ""},
             EngineCase{"in:work", "Rent"},
             EngineCase{"type:pdf", "Scans"},
             EngineCase{"has:attachment", "Scans"},
             EngineCase{"file:lease", "Scans"},
             EngineCase{"lease", "Scans"},
             EngineCase{"invoice in:trash", "Old plan"},
             EngineCase{"invoice in:anywhere", "Old plan, Pay the invoice, Tax return"},
             EngineCase{"1234.5", "Rent"},
             EngineCase{"2025-01-15", "Rent"},
             EngineCase{"15 january 2025", "Rent"},
             EngineCase{"1234 5678 9012", "Account"},
             EngineCase{"123456789012", "Account"},
             EngineCase{"9,90", "Coffee"},
             EngineCase{"メモ", "日本語のメモ"},
             EngineCase{"会議", "日本語のメモ"},
             EngineCase{"tsy2025", ""},
             EngineCase{"created:yesterday is:task", "Pay the invoice"},
             EngineCase{"created:today", ""},
             EngineCase{"(tag:tax OR coffee) -is:task", "Coffee, Tax return"},
         }) {
        SearchResponse response =
            engine_.search({.text = query, .effort = SearchEngine::Effort::asTyped});
        EXPECT_EQ(this->titles(response), titles) << query;
    }
}

TEST_F(SearchEngineTest, TellsWhatMatchedAndWhere) {
    const SearchResult note = search("invoice -task is:note").results.at(0);
    EXPECT_EQ(plain(note.snippet), "The [invoice] of the annual report");
    const SearchResult scans = search("lease").results.at(0);
    EXPECT_EQ(plain(scans.snippet), "a [lease] contract from 2019");  // nothing in the body matched
    ASSERT_EQ(scans.attachments.size(), 1U);
    EXPECT_EQ(plain(scans.attachments[0].highlightedFilename), "[lease].pdf");
    EXPECT_EQ(plain(search("tax").results.at(0).highlightedTags), "[tax]");
    // No file holds both words, so those with one of them are shown.
    EXPECT_EQ(search("lease see").results.at(0).attachments.size(), 1U);
}

TEST_F(SearchEngineTest, CorrectsWordsThatAreNowhere) {
    const SearchResponse response = search("invoce -raport");
    EXPECT_EQ(titles(response), "Pay the invoice, Tax return");
    EXPECT_TRUE(response.showingCloseMatches);
    ASSERT_EQ(response.corrections.size(), 1U);
    EXPECT_EQ(response.corrections[0].typed, "invoce");
    EXPECT_EQ(response.corrections[0].suggestion, "invoice");
    EXPECT_EQ(
        engine_.search({.text = "invoce", .effort = SearchEngine::Effort::asTyped}).results.size(),
        0U);
    EXPECT_FALSE(search("invo", QueryScanner::LastWord::mayGoOn).showingCloseMatches);
    EXPECT_EQ(found("\"invoce\""), "");

    add({.title = "Bananas"});  // the words of a new note are known at once
    EXPECT_EQ(found("banenas"), "Bananas");
}

TEST_F(SearchEngineTest, LooksIntoWordsBeforeItDropsAny) {
    const SearchResponse response = search("voic");
    EXPECT_EQ(titles(response), "Pay the invoice, Tax return");
    EXPECT_TRUE(response.matchedPartsOfWords);
    EXPECT_FALSE(response.matchedSomeTermsOnly);
    EXPECT_EQ(
        plain(search("voic is:note").results.at(0).snippet), "The in[voic]e of the annual report");
    EXPECT_EQ(found("_nvoice %oice"), "");  // these are no wildcards
}

TEST_F(SearchEngineTest, DropsTheWordWithoutWhichThereIsMost) {
    const SearchResponse dropped = search("pay invoice xylophones");
    EXPECT_EQ(titles(dropped), "Pay the invoice");
    EXPECT_TRUE(dropped.matchedSomeTermsOnly);
    ASSERT_TRUE(dropped.relaxation);
    EXPECT_EQ(dropped.relaxation->droppedTerm, "xylophones");
    EXPECT_EQ(dropped.relaxation->resultCount, 1);

    const SearchResponse last = search("coffee lease");  // one each: the last one goes
    EXPECT_EQ(titles(last), "Coffee");

    const SearchResponse any = search("qqqq coffee wwww zzzz");
    EXPECT_EQ(titles(any), "Coffee");
    EXPECT_TRUE(any.matchedSomeTermsOnly);
    EXPECT_FALSE(any.relaxation);

    const SearchResponse filtered = search("coffee in:work -is:task");
    EXPECT_EQ(titles(filtered), "");
    ASSERT_TRUE(filtered.relaxation);
    EXPECT_EQ(filtered.relaxation->droppedTerm, "in:work");
    EXPECT_EQ(filtered.relaxation->resultCount, 1);
}

TEST_F(SearchEngineTest, StatementsThatAreKeptServeOtherQueriesAndFiles) {
    // More forms than are kept, one after the other and again.
    const auto askInManyForms = [&] {
        std::string query = "invoice";
        for (std::size_t i = 0; i < 2 * RecentStatements::most; ++i) {
            EXPECT_EQ(found(query), "Pay the invoice, Tax return") << query;
            EXPECT_EQ(found("invoice is:task"), "Pay the invoice");
            EXPECT_EQ(found("tax is:task"), "Pay the invoice");
            query += " tag:tax";
        }
    };
    askInManyForms();
    SearchIndex other(folder_ / "Search.sqlite");
    other.setMeta("a commit", "after which nothing may hold back the journal");
    EXPECT_TRUE(other.forgetDeleted()) << "a statement stands in the middle of its rows";
    askInManyForms();

    index_.replaceFile();
    EXPECT_EQ(found("invoice"), "");
    add({.title = "Anew", .body = "invoice"});
    EXPECT_EQ(found("invoice"), "Anew");
}

TEST_F(SearchEngineTest, BrowsesFavouritesFirst) {
    index_.clear();
    const auto note =
        [&](const char* title, double updatedAgo, std::optional<double> favoritedAgo) {
            IndexDocument document{.id = Uuid::random(random_), .title = title};
            document.updatedAt = clock_.now() - Instant::Duration(updatedAgo);
            document.favorite = favoritedAgo.has_value();
            if (favoritedAgo) {
                document.favoritedAt = clock_.now() - Instant::Duration(*favoritedAgo);
            }
            index_.upsert(document);
        };
    note("today", 10, {});
    note("older", 100, {});
    note("favourite", 5'000, 900);
    note("newer favourite", 6'000, 800);
    std::string order;
    for (const SearchResult& result : engine_.search({.text = "", .limit = 3}).results) {
        order += result.title + ", ";
    }
    EXPECT_EQ(order, "newer favourite, favourite, today, ");
}

TEST_F(SearchEngineTest, EveryTextHasAnAnswer) {
    std::string nested = "a";
    for (int i = 0; i < 30; ++i) {
        nested = (i % 2 == 0 ? "a (" : "-b OR (") + nested + ")";
    }
    std::string manyWords;
    for (int i = 0; i < 10'000; ++i) {
        manyWords += "word" + std::to_string(i) + " ";
    }
    std::vector<std::string> texts{
        "\"",
        "(((",
        "tag:",
        "-",
        "NEAR(",
        "NEAR(a b, 3)",
        "*",
        "^a",
        "a^2",
        "title:",
        "{a}:b",
        "a AND",
        "OR OR",
        "\"\"\"",
        "a\"b",
        "'",
        "';DROP TABLE docs;--",
        "%",
        "_",
        "\\",
        "-*",
        std::string("a\0b", 3),
        "\xFF\xFE",
        "\xED\xA0\x80",
        "\u2062[x]\u2062",
        "keys:tsy2025",
        nested,
        manyWords,
        std::string(1'000'000, 'x'),
        std::string(1'000'000, '7'),
        "\"" + manyWords + "\"",
        "*" + std::string(2'000, 'y') + "*"};
    test::SeededRandom random(11);
    constexpr std::string_view pieces[] = {"\"",      "(",          ")",        "-",     "!",
                                           "*",       "#",          ":",        ",",     "..",
                                           " ",       " OR ",       " NOT ",    "tag:",  "in:trash",
                                           "is:open", "a",          "é",        "日本",  "\\",
                                           "%",       "|",          "created:", "near:", ">",
                                           "1,2",     "2025-01-15", "amount:",  "file:", "+",
                                           "^",       "{",          "}",        "NEAR",  "AND",
                                           "'",       ";"};
    for (int i = 0; i < 300; ++i) {
        std::string text;
        for (std::uint64_t j = random.below(30); j > 0; --j) {
            text += pieces[random.below(std::size(pieces))];
        }
        texts.push_back(std::move(text));
    }
    for (const std::string& text : texts) {
        EXPECT_NO_THROW(search(text)) << text.substr(0, 200);
        EXPECT_NO_THROW(search(text, QueryScanner::LastWord::mayGoOn)) << text.substr(0, 200);
    }
    EXPECT_EQ(index_.countDocuments(), 8);
}

}  // namespace
}  // namespace tesserine
