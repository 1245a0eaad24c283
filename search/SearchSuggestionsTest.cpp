#include "search/SearchSuggestions.h"

#include "base/Preferences.h"
#include "search/RecentSearches.h"
#include "search/SearchSynonyms.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tesserine {
namespace {

using testing::ElementsAre;

class SearchSuggestionsTest : public testing::Test {
protected:
    SearchSuggestionsTest() {
        add(
            {.title = "Tax return",
             .body = "tax table",
             .tags = {"tax", "to do"},
             .notebook = "Work"});
        add({.title = "Taxi", .body = "tax", .tags = {"tax", "Täxi"}, .notebook = "Home Office"});
        add({.title = "Task list", .tags = {"travel"}, .notebook = "Work"});
    }
    void add(IndexDocument document) {
        document.id = Uuid::random(random_);
        document.createdAt = *Instant::parseISO("2025-06-01T00:00:00Z");
        index_.upsert(document);
    }
    /// `kind title > replacement (detail)` for each suggestion.
    std::vector<std::string> suggested(
        const std::string& typed, const std::vector<std::string>& recent = {}) {
        std::vector<std::string> lines;
        for (const SearchSuggestion& suggestion : suggestions_.suggest(typed, recent)) {
            lines.push_back(
                std::string(nameOf(suggestion.kind)) + " " + suggestion.title + " > "
                + suggestion.replacement
                + (suggestion.detail.empty() ? "" : " (" + suggestion.detail + ")"));
        }
        return lines;
    }

    test::TemporaryFolder folder_;
    test::SeededRandom random_{3};
    SearchIndex index_{folder_ / "Search.sqlite"};
    SearchSuggestions suggestions_{index_};
};

TEST_F(SearchSuggestionsTest, OffersOperatorsThenEarlierQueriesThenWords) {
    EXPECT_THAT(
        suggested("rent ta", {"Rent tax", "rent", "tax"}),
        ElementsAre(
            "operator tag: > rent tag: (notes carrying a tag)",
            "recent Rent tax > Rent tax",
            "word tax > rent tax ",
            "word table > rent table ",
            "word task > rent task ",
            "word taxi > rent taxi ",
            "word Tax return > rent \"Tax return\"  (title)",
            "word Taxi > rent Taxi  (title)"));
    EXPECT_EQ(suggested("b").size(), 2U);  // before: and body:
    EXPECT_THAT(suggested(""), ElementsAre());
    EXPECT_THAT(suggested("tax ", {"tax car"}), ElementsAre("recent tax car > tax car"));
}

TEST_F(SearchSuggestionsTest, OffersValuesBehindAnOperator) {
    EXPECT_THAT(
        suggested("-tag:ta"),
        ElementsAre("value tax > -tag:tax  (2)", "value Täxi > -tag:Täxi  (1)"));
    EXPECT_THAT(
        suggested("x in:"),
        ElementsAre(
            "value Work > x in:Work  (2)", "value Home Office > x in:\"Home Office\"  (1)"));
    EXPECT_THAT(
        suggested("in:\"home of"), ElementsAre("value Home Office > in:\"Home Office\"  (1)"));
    EXPECT_THAT(suggested("tag:tax,tr"), ElementsAre("value travel > tag:tax,travel  (1)"));
    EXPECT_THAT(suggested("#to"), ElementsAre("value to do > #\"to do\"  (1)"));
    EXPECT_THAT(suggested("created:2"), ElementsAre("value 2025 > created:2025 "));
    EXPECT_THAT(suggested("sort:o"), ElementsAre("value oldest > sort:oldest "));
}

TEST(RecentSearches, KeepsTheLastTwentyOnce) {
    Preferences preferences = Preferences::inMemory();
    RecentSearches recent(preferences);
    for (int i = 0; i < 25; ++i) {
        recent.remember("query " + std::to_string(i));
    }
    recent.remember("  QUERY 24 ");
    recent.remember(" ");
    const auto all = recent.all();
    ASSERT_EQ(all.size(), 20U);
    EXPECT_EQ(all[0], "QUERY 24");
    EXPECT_EQ(all[1], "query 23");
    EXPECT_EQ(all[19], "query 5");
}

TEST(SearchSynonyms, AreEditedAsLinesAndSurviveWhatIsUnreadable) {
    const auto synonyms =
        SearchSynonyms::fromLines("invoice, bill ,credit note\n\nalone\nCafé,,coffee house\n");
    EXPECT_EQ(synonyms.lines(), "invoice, bill, credit note\nCafé, coffee house\n");
    EXPECT_THAT(synonyms.of("BILL"), ElementsAre("invoice", "credit note"));
    EXPECT_THAT(synonyms.of("cafe"), ElementsAre("coffee house"));
    EXPECT_THAT(synonyms.of("credit"), ElementsAre());

    Preferences preferences = Preferences::inMemory();
    synonyms.save(preferences);
    EXPECT_EQ(SearchSynonyms::load(preferences).lines(), synonyms.lines());
    for (const char* unreadable : {"", "{", "[]", "{\"groups\": [1]}", "{\"groups\": {}}"}) {
        preferences.set(SearchSynonyms::preferenceKey, unreadable);
        EXPECT_TRUE(SearchSynonyms::load(preferences).groups.empty()) << unreadable;
    }
}

}  // namespace
}  // namespace tesserine
