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
    EXPECT_EQ(excerptOf("", R"("a")"), "");
    EXPECT_EQ(excerptOf("— … —", R"("a")"), "— … —");
}

}  // namespace
}  // namespace tesserine
