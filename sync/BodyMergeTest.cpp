#include "sync/BodyMerge.h"

#include "sync/RecordMerge.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(BodyMerge, ChangesOfDifferentBlocksAreJoinedAndOthersRefused) {
    struct Case {
        const char* base;
        const char* mine;
        const char* theirs;
        const char* merged;  // null: both changed one place
    };
    for (const auto& [base, mine, theirs, merged] : {
             Case{"<p>a</p><p>b</p>", "<p>A</p><p>b</p>", "<p>a</p><p>B</p>", nullptr},
             Case{
                 "<p>a</p><p>b</p><p>c</p>",
                 "<p>A</p><p>b</p><p>c</p>",
                 "<p>a</p><p>b</p><p>C</p>",
                 "<p>A</p><p>b</p><p>C</p>"},
             Case{"<p>a</p>", "<p>x</p><p>a</p>", "<p>a</p><p>y</p>", "<p>x</p><p>a</p><p>y</p>"},
             Case{"<p>a</p>", "<p>a</p><p>x</p>", "<p>a</p><p>y</p>", nullptr},
             Case{"<p>a</p><p>b</p>", "<p>b</p>", "<p>a</p><p>b</p><p>c</p>", "<p>b</p><p>c</p>"},
             Case{"<p>a</p><p>b</p>", "<p>b</p>", "<p>A</p><p>b</p>", nullptr},
             Case{"<p>a</p>", "<p>b</p>", "<p>b</p>", "<p>b</p>"},
             Case{"", "<p>a</p>", "<p>b</p>", nullptr},
             Case{"<p>a</p><p>a</p>", "<p>a</p>", "<p>a</p><p>a</p><p>z</p>", nullptr},
         }) {
        const auto result = mergedBody(base, mine, theirs);
        EXPECT_EQ(result.value_or("refused"), merged == nullptr ? "refused" : merged)
            << mine << " and " << theirs;
    }
}

TEST(BodyMerge, LongNotesAreJoinedWhereTheyDiffer) {
    const auto numbered = [](const std::string& first, const std::string& last) {
        std::string body = "<p>" + first + "</p>";
        for (int i = 0; i < 5'000; ++i) {
            body += "<p>" + std::to_string(i) + "</p>";
        }
        return body + "<p>" + last + "</p>";
    };
    EXPECT_EQ(
        mergedBody(numbered("a", "z"), numbered("A", "z"), numbered("a", "Z")), numbered("A", "Z"));
    EXPECT_EQ(mergedBody(numbered("a", "z"), numbered("A", "Z"), numbered("b", "y")), std::nullopt)
        << "too much to compare";
}

TEST(RecordMerge, EachMemberComesFromTheSideThatChangedIt) {
    const JSONObject base{
        {"title", "t"}, {"is_pinned", false}, {"tag_ids", JSONValue::Array{"a", "b"}}};
    const JSONObject mine{
        {"title", "mine"}, {"is_pinned", false}, {"tag_ids", JSONValue::Array{"b", "c"}}};
    const JSONObject theirs{
        {"title", "theirs"}, {"is_pinned", true}, {"tag_ids", JSONValue::Array{"a", "b", "d"}}};
    const auto merge = [&](double mySeconds, const std::optional<JSONObject>& from) {
        return mergeRecords(
            EntityKind::note,
            from,
            {.payload = mine, .updatedAt = Instant::fromSeconds(mySeconds)},
            {.payload = theirs, .updatedAt = Instant::fromSeconds(5)});
    };
    const RecordMerge tie = merge(5, base);
    EXPECT_EQ(
        tie.merged,
        (JSONObject{
            {"title", "theirs"},
            {"is_pinned", true},
            {"tag_ids", JSONValue::Array{"b", "c", "d"}}}));
    EXPECT_TRUE(tie.isConflict);
    EXPECT_EQ(tie.replaced, std::vector<JSONObject>{mine});
    EXPECT_EQ(merge(6, base).merged.at("title"), JSONValue("mine"));
    EXPECT_EQ(merge(6, base).replaced, std::vector<JSONObject>{theirs});

    const RecordMerge strangers = merge(6, std::nullopt);
    EXPECT_EQ(strangers.merged.at("is_pinned"), JSONValue(false));
    EXPECT_EQ(strangers.merged.at("tag_ids"), JSONValue(JSONValue::Array{"a", "b", "c", "d"}));
}

}  // namespace
}  // namespace tesserine
