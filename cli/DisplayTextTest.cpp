#include "cli/DisplayText.h"

#include "cli/Output.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tesserine::cli {
namespace {

TEST(DisplayText, WidthIsThatOfATerminal) {
    struct Case {
        const char* text;
        std::size_t columns;
    };
    for (const auto& [text, columns] : {
             Case{"", 0},
             Case{"Plan", 4},
             Case{"Ëtéà", 4},
             Case{"e\u0301", 1},  // a letter and its accent
             Case{"計画", 4},     // wide letters
             Case{"한글", 4},
             Case{"👍🏽", 2},            // an emoji with a skin tone is one
             Case{"👩‍👩‍👧", 2},  // and so is a family
             Case{"❤️", 2},              // a heart shown as an emoji
             Case{"a\u200Bb", 2},            // a space of no width
         }) {
        SCOPED_TRACE(text);
        EXPECT_EQ(displayWidth(text), columns);
    }
}

TEST(DisplayText, ShortenedTextNeverCutsACharacterAndFits) {
    EXPECT_EQ(fitted("Plan", 4), "Plan");
    EXPECT_EQ(fitted("Plans", 4), "Pla…");
    EXPECT_EQ(fitted("計画書", 6), "計画書");
    EXPECT_EQ(fitted("計画書", 5), "計画…");
    EXPECT_EQ(fitted("計画書", 4), "計…");  // half of a wide letter has no place
    EXPECT_EQ(fitted("👩‍👩‍👧👩‍👩‍👧", 3), "👩‍👩‍👧…");
    EXPECT_EQ(fitted("Plan", 0), "");
}

TEST(DisplayText, NothingInANoteGivesTheTerminalOrders) {
    EXPECT_EQ(oneLine("a\x1b[31mb\tc\nd\u202Ee\u0085f"), "a[31mb c def");
    EXPECT_EQ(harmless("a\x1b]0;x\x07\n\tb"), "a]0;x\n\tb");
}

class OutputTest : public ::testing::Test {
protected:
    std::string show(const Table& table, bool isTerminal, bool noColor = false) {
        std::istringstream input;
        std::ostringstream output;
        FixedClock clock{Instant()};
        SecureRandom random;
        Environment environment{
            .input = input, .output = output, .error = output, .clock = clock, .random = random};
        environment.outputIsTerminal = isTerminal;
        environment.terminalColumns = 24;
        environment.variables["TERM"] = "xterm";
        if (noColor) environment.variables["NO_COLOR"] = "1";
        Output(environment, Output::Format::text).table(table);
        return output.str();
    }

    const Table table_{
        .columns =
            {{.title = "N", .isNumber = true},
             {.title = "TITLE", .style = Style::strong, .mayShrink = true},
             {.title = "DAY"}},
        .rows = {
            {"1", "計画", "today"}, {"12", "A very long title indeed", "today"}, {"3", "x", ""}}};
};

TEST_F(OutputTest, APipeGetsEverythingWithoutTitlesAndColours) {
    EXPECT_EQ(
        show(table_, false),
        " 1  計画                      today\n"
        "12  A very long title indeed  today\n"
        " 3  x\n");
}

TEST_F(OutputTest, ATerminalGetsWhatFits) {
    EXPECT_EQ(
        show(table_, true, true),
        " N  TITLE          DAY\n"
        " 1  計画           today\n"
        "12  A very long…   today\n"
        " 3  x\n");
}

}  // namespace
}  // namespace tesserine::cli
