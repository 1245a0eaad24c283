#include "app/commands/FuzzyMatch.h"

#include <gtest/gtest.h>

#include <ranges>
#include <string>

namespace tesserine::app {
namespace {

/// The text with its matching letters in brackets, or "no".
std::string marked(const QString& typed, const QString& text) {
    const auto match = fuzzyMatch(typed, text);
    if (!match) return "no";
    QString shown = text;
    for (const int at : std::views::reverse(match->positions)) {
        shown.insert(at + 1, ']').insert(at, '[');
    }
    return shown.toStdString();
}

TEST(FuzzyMatch, TakesLettersInOrderAndWordsByTheirBeginnings) {
    struct Case {
        const char* typed;
        const char* text;
        const char* marked;
    };
    for (const auto& [typed, text, expected] : {
             Case{"", "New Note", "New Note"},
             Case{"nn", "New Note", "[N]ew [N]ote"},
             Case{"note", "New Note", "New [N][o][t][e]"},
             Case{"s v", "Show Versions", "[S]how [V]ersions"},
             Case{"cafe", "Grand Café", "Grand [C][a][f][é]"},
             Case{"eton", "New Note", "no"},  // not in this order
             Case{"ht1", "Heading 1", "no"},
             // The beginning of the first word would part the letters.
             Case{"nwt", "New note wt", "[N]ew note [w][t]"},
             Case{"se", "Use Settings", "Use [S][e]ttings"},
         }) {
        SCOPED_TRACE(std::string(typed) + " in " + text);
        EXPECT_EQ(marked(typed, QString::fromUtf8(text)), expected);
    }
}

TEST(FuzzyMatch, RanksWhatAPersonMeansFirst) {
    struct Case {
        const char* typed;
        const char* better;
        const char* worse;
    };
    for (const auto& [typed, better, worse] : {
             Case{"bold", "Bold", "Bulleted Old"},
             Case{"find", "Find Next", "Full Indent"},
             Case{"set", "Settings…", "Use Settings"},
             Case{"tag", "Tags…", "Save as Tag"},
         }) {
        SCOPED_TRACE(typed);
        EXPECT_GT(fuzzyMatch(typed, better)->score, fuzzyMatch(typed, worse)->score);
    }
}

}  // namespace
}  // namespace tesserine::app
