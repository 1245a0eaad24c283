#include "base/Clock.h"
#include "search/MarkedText.h"
#include "search/SearchFilters.h"
#include "search/SearchIndex.h"
#include "search/SearchRows.h"
#include "search/SearchStatement.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

/// The two statements of a search for words, over a library made up at random.
namespace tesserine {
namespace {

class RankedFirst : public testing::Test {
protected:
    RankedFirst() {
        index_.batch([&] {
            for (int i = 0; i < 400; ++i) {
                index_.upsert(someDocument());
            }
        });
    }

    std::size_t below(std::size_t bound) { return dice_() % bound; }

    /// Word 0 is in most texts, the last one in few.
    std::string someWords(std::size_t count) {
        constexpr std::size_t wordCount = 60;
        std::string text;
        for (std::size_t i = 0; i < count; ++i) {
            text += (i % 9 == 8 ? ". w" : " w") + std::to_string(below(1 + below(wordCount)));
        }
        return text;
    }
    IndexDocument someDocument() {
        IndexDocument document{
            .id = Uuid::random(random_),
            .kind = below(5) == 0 ? SearchKind::task : SearchKind::note,
            .title = someWords(3),
            .body = someWords(below(80)),
            .notebook = someWords(1),
            .updatedAt = Instant::fromSeconds(1'700'000'000 + daysApart(400)),
            .isTrashed = below(10) == 0,
            .favorite = below(10) == 0};
        if (below(3) == 0) document.tags = {someWords(1), "tag"};
        if (below(4) == 0) document.attachmentText = someWords(30);
        if (below(6) == 0) document.latitude = document.longitude = 4.5;
        return document;
    }
    /// Whole days, so that many are equal.
    double daysApart(std::size_t most) { return 86'400.0 * static_cast<double>(below(most)); }

    /// Every value of every row.
    std::string rowsOf(const BoundSQL& bound) {
        return index_.perform([&](SQLiteDatabase& database) {
            Statement rows = database.prepare(bound.sql);
            int place = 0;
            for (const SQLValue& value : bound.bindings) {
                ++place;
                if (const auto* text = std::get_if<std::string>(&value)) {
                    rows.bindText(place, *text);
                } else if (const auto* number = std::get_if<double>(&value)) {
                    rows.bindDouble(place, *number);
                } else {
                    rows.bindInteger(place, std::get<std::int64_t>(value));
                }
            }
            std::string text;
            while (rows.step()) {
                for (int i = 0; i < rows.columnCount(); ++i) {
                    text += rows.text(i).value_or("NULL") + "|";
                }
                text += "\n";
            }
            return text;
        });
    }

    std::minstd_rand dice_{5};
    test::SeededRandom random_{5};
    test::TemporaryFolder folder_;
    SearchIndex index_{folder_ / SearchIndex::fileName};
};

TEST_F(RankedFirst, GivesTheRowsOfTheStatementThatMarksAsItRanks) {
    const Instant now = Instant::fromSeconds(1'735'000'000);
    const std::vector<Search> searches{
        {.match = R"("w0")"},
        {.match = R"("w0")", .strict = R"("w0")"},
        {.match = R"("w0" AND "w1")", .strict = R"("w0 w1")"},
        {.match = R"({title tags notebook} : ("w3" OR "tag"))"},
        {.match = R"("w1"*)", .strict = R"("w1")"},
        {.match = R"("w2")", .negated = {R"("w0")", R"("w4")"}},
        {.match = R"("w2")",
         .filters = {filter::isTrashed(false), filter::isKind(SearchKind::note)}},
        {.match = R"("w59")"},
        {.match = R"("nowhere")"},
    };
    for (Search search : searches) {
        for (const std::int64_t limit : {1, 7, 50, 500}) {
            for (const SearchSort sort :
                 {SearchSort::relevance, SearchSort::newest, SearchSort::oldest}) {
                search.limit = limit;
                search.sort = sort;
                SCOPED_TRACE(*search.match + " " + std::to_string(limit));
                EXPECT_EQ(
                    rowsOf(rankedFirstStatement(search, now)),
                    rowsOf(searchStatement(search, now)));
            }
        }
    }
}

/// The time for a snippet grows with the square of what matches in a text.
TEST_F(RankedFirst, ALongTextFullOfMatchesTakesNoLongerThanOthers) {
    IndexDocument book = someDocument();
    book.title = "Book";
    book.body = "An unlike beginning of some words. ";
    for (int i = 0; i < 30'000; ++i) {
        book.body += "the rare word ";
    }
    book.attachmentText.clear();
    index_.upsert(book);
    const SystemClock clock;
    for (const char* match : {R"("the" AND "rare" AND "word")", R"("wor"*)"}) {
        const auto began = clock.monotonic();
        const auto results = index_.perform([&](SQLiteDatabase&) {
            return readResults(index_, {.match = match, .limit = 20}, clock.now());
        });
        EXPECT_LT(clock.monotonic() - began, std::chrono::seconds(20)) << match;
        ASSERT_EQ(results.size(), 1U);
        EXPECT_TRUE(marked::hasMark(results[0].snippet)) << results[0].snippet;
        EXPECT_LT(results[0].snippet.size(), 400U);
    }
}

TEST_F(RankedFirst, IsLeftWhereLookingTwiceCostsMore) {
    EXPECT_FALSE(isQuickerRankedFirst({}));
    EXPECT_FALSE(isQuickerRankedFirst({.match = R"("w0")", .limit = 501}));
    for (const char* expression :
         {R"("red wine")", R"("a" AND "wi-fi")", R"("say ""so""")", R"("a"*)"}) {
        EXPECT_FALSE(isQuickerRankedFirst({.match = expression})) << expression;
    }
    for (const char* expression : {R"({title body} : "été")", R"("a" AND ("b" OR "c2"))"}) {
        EXPECT_TRUE(isQuickerRankedFirst({.match = expression})) << expression;
    }
}

}  // namespace
}  // namespace tesserine
