#include "search/MarkedText.h"

#include "search/SearchStatement.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

/// `[` and `]` stand for the markers.
std::string marked(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '[') {
            result += marker::open;
        } else if (c == ']') {
            result += marker::close;
        } else {
            result += c;
        }
    }
    return result;
}

TEST(MarkedText, AnExcerptShowsTheFirstMatchAmongItsWords) {
    struct Case {
        const char* text;
        const char* excerpt;
    };
    for (const auto& [text, excerpt] : {
             Case{"", ""},
             Case{"one two", "one two"},
             Case{"a b c d e f g h", "a b c d e f…"},
             Case{"a b c d e f [g] h i j k", "…e f [g] h i j…"},
             Case{"[a] b c d e f g", "[a] b c d e f…"},
             Case{"a b c d e [f]", "…d e [f]"},
             Case{"a b [c d e f g h i] j", "a b [c d e f]…"},  // what is cut is closed
             Case{"a\n\tb\n [c]", "a\n\tb\n [c]"},
         }) {
        EXPECT_EQ(marked::excerpt(marked(text), 6), marked(excerpt)) << text;
    }
}

TEST(MarkedText, PartsAreMarkedWhereverTheyStand) {
    const std::vector<std::string> parts{"voic", "ICE", "é"};
    EXPECT_EQ(marked::mark("An invoice, Évian é", parts), marked("An in[voice], Évian [é]"));
    EXPECT_EQ(marked::mark("", parts), "");
    EXPECT_EQ(marked::mark("none", std::vector<std::string>{""}), "none");
}

TEST(MarkedText, ComesInPiecesWithoutItsMarkers) {
    std::string pieces;
    marked::forEachPiece(marked("a [b][c] d [e"), [&](std::string_view piece, bool isMarked) {
        pieces += (isMarked ? "<" : "(") + std::string(piece) + (isMarked ? ">" : ")");
    });
    EXPECT_EQ(pieces, "(a )<b><c>( d )<e>");
}

}  // namespace
}  // namespace tesserine
