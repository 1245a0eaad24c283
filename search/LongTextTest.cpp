#include "search/LongText.h"

#include "search/MarkedText.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

/// `[` and `]` stand for the markers.
std::string excerptOf(std::string_view text, std::string_view expression) {
    std::string shown;
    marked::forEachPiece(
        longTextExcerpt(text, expression, 6), [&shown](std::string_view piece, bool isMarked) {
            shown += isMarked ? "[" + std::string(piece) + "]" : std::string(piece);
        });
    return shown;
}

TEST(LongText, ShowsTheWordsAroundTheFirstMatch) {
    constexpr const char* text = "one two three four (Été), five\n\n\nsix winery  wine. last";
    struct Case {
        const char* expression;
        const char* excerpt;
    };
    for (const auto& [expression, excerpt] : {
             Case{R"("ete")", "…four ([Été]), five\n\n\nsix winery  wine.…"},
             Case{
                 R"({title body} : ("wine" AND "six"))",
                 "…(Été), five\n\n\n[six] winery  [wine]. last"},
             Case{R"("win"*)", "…five\n\n\nsix [winery]  [wine]. last"},
             Case{R"("three four"*)", "one two [three] [four] (Été), five…"},
             Case{R"("one")", "[one] two three four (Été), five…"},
             Case{R"("last")", "…winery  wine. [last]"},
             Case{R"("not there")", "one two three four (Été), five…"},
             Case{"", "one two three four (Été), five…"},
         }) {
        EXPECT_EQ(excerptOf(text, expression), excerpt) << expression;
    }
    EXPECT_EQ(excerptOf("read foo/Bar-baz, then", R"("bar baz")"), "read foo/[Bar]-[baz], then");
    EXPECT_EQ(excerptOf("", R"("a")"), "");
    EXPECT_EQ(excerptOf("— … —", R"("a")"), "— … —");
}

TEST(LongText, OfWordsWithoutSpacesOnlyWhatIsNearIsShown) {
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "長い文章、";
    const std::string shown = excerptOf(text + "検索。" + text, R"("検索")");
    EXPECT_TRUE(shown.starts_with("…")) << shown;
    EXPECT_TRUE(shown.ends_with("…")) << shown;
    EXPECT_NE(shown.find("、[検索]。"), std::string::npos) << shown;
    EXPECT_LT(shown.size(), 1500U);
}

}  // namespace
}  // namespace tesserine
