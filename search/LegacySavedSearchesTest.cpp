#include "search/LegacySavedSearches.h"

#include "base/Preferences.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(LegacySavedSearches, AreRewrittenIntoTodaysSyntax) {
    struct Case {
        const char* legacy;
        const char* today;
    };
    for (const auto& [legacy, today] : {
             Case{"intitle:plan notebook:\"My Work\"", "title:plan notebook:\"My Work\""},
             Case{"created:day-7 -updated:day-7", "after:8d -updated:7d"},
             Case{"any: red \"dry wine\" intitle:x", "red OR \"dry wine\" OR title:x"},
             Case{"todo:* a -todo:false", "a"},
             Case{"-tag:x  two   spaces", "-tag:x  two   spaces"},  // not touched at all
             Case{"created:day-x \"intitle:a\"", "created:day-x \"intitle:a\""},
         }) {
        EXPECT_EQ(LegacySavedSearches::rewritten(legacy), today);
    }
}

TEST(LegacySavedSearches, AreBroughtOverOnce) {
    const test::TemporaryFolder folder;
    const FixedClock clock(*Instant::parseISO("2026-03-14T09:15:00Z"));
    test::SeededRandom random(5);
    test::putContent(
        folder / "settings.json",
        R"({"tesserine.search.legacySaved": [{"name": "Plans", "query": "intitle:plan"},
            {"name": "OLD", "query": "tag:old"}, 7, {"name": "Plans", "query": "intitle:plan"}]})");
    Preferences preferences(folder / "settings.json");
    TesserineStore store({.directory = folder.path()}, {.clock = clock, .random = random});
    StoreContext& context = store.viewContext();
    const SavedSearchService searches(clock);
    searches.create(context, "old", "tag:old");
    searches.create(context, "Week", "updated:day-7");
    context.save();

    const auto shown = [&] {
        std::string line;
        for (const CDSavedSearch* search : searches.list(context)) {
            line += search->name.valueOr("") + "=" + search->query.valueOr("") + " ";
        }
        return line;
    };
    LegacySavedSearches legacy(searches, preferences);
    ASSERT_TRUE(legacy.isDue());
    legacy.migrate(context);
    EXPECT_EQ(shown(), "old=tag:old Week=updated:7d Plans=title:plan ");
    EXPECT_FALSE(legacy.isDue());

    // What people write from now on means what it says.
    searches.create(context, "That day", "created:day-7");
    legacy.migrate(context);
    EXPECT_EQ(shown(), "old=tag:old Week=updated:7d Plans=title:plan That day=created:day-7 ");
}

}  // namespace
}  // namespace tesserine
