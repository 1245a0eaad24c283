#include "search/TermDictionary.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(TermDictionary, FindsTheWordThatWasMeant) {
    const TermDictionary dictionary(
        {{"invoice", 5},
         {"involve", 9},
         {"voice", 2},
         {"report", 3},
         {"resort", 3},
         {"reports", 8},
         {"müller", 1},
         {"1nvoice", 50},
         {"accommodation", 1},
         {"note", 7},
         {"noted", 7}});
    struct Case {
        const char* typed;
        const char* meant;
    };
    for (const auto& [typed, meant] : {
             Case{"invoce", "invoice"},    // left out
             Case{"invoicee", "invoice"},  // added
             Case{"invioce", "invoice"},   // swapped
             Case{"imvoice", "invoice"},   // changed
             Case{"anvoice", "invoice"},   // the first letter may be wrong, too
             Case{"repport", "report"},
             Case{"reort", "report"},  // as near as “resort” and in as many: the alphabet
             Case{"muller", "müller"},
             Case{"acomodation", "accommodation"},  // two, in a long word
             Case{"invvocie", "invoice"},
             Case{"inovcie", "none"},  // two, in a word of seven
             Case{"nots", "note"},
             Case{"not", "none"},        // too short
             Case{"report", "reports"},  // itself is no correction
         }) {
        EXPECT_EQ(dictionary.closest(typed).value_or("none"), meant) << typed;
    }
}

TEST(TermDictionary, CountsEditsUpToALimit) {
    EXPECT_EQ(editDistance(U"", U"abc", 3), 3U);
    EXPECT_EQ(editDistance(U"ab", U"ba", 2), 1U);
    EXPECT_EQ(editDistance(U"ca", U"abc", 3), 3U);  // no letter is changed twice
    EXPECT_EQ(editDistance(U"kitten", U"sitting", 3), 3U);
    EXPECT_EQ(editDistance(U"kitten", U"sitting", 2), 3U);
    EXPECT_EQ(editDistance(U"abcdef", U"abcdef", 0), 0U);
}

}  // namespace
}  // namespace tesserine
