#include "app/commands/FuzzyMatch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
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
             Case{"note new", "New Note", "[N][e][w] [N][o][t][e]"},
             Case{"TRA  mov", "Move to Trash", "[M][o][v]e to [T][r][a]sh"},
             Case{"no not", "A note", "A [n][o][t]e"},  // words may overlap
             Case{"note old", "New Note", "no"},        // every word has to be there
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

TEST(FuzzyMatch, EveryLetterOfAMatchStandsWhereItSays) {
    std::mt19937 dice(3);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same throws every time
    const auto made = [&dice](std::uint_fast32_t most) {
        constexpr const char16_t* letters[] = {u"a", u"B", u"c", u" ", u"é", u"/", u"😀"};
        QString text;
        for (auto left = dice() % most; left > 0; --left)
            text += QString::fromUtf16(letters[dice() % 7]);
        return text;
    };
    const auto plain = [](QChar unit) {
        return (unit == u'é' ? QChar(u'e') : unit).toCaseFolded();
    };
    int matches = 0;
    for (int round = 0; round < 4000; ++round) {
        const QString typed = made(6);
        const QString text = made(14);
        const auto match = fuzzyMatch(typed, text);
        if (!match) continue;
        ++matches;
        SCOPED_TRACE(typed.toStdString() + " in " + text.toStdString());
        QString found;
        for (std::size_t i = 0; i < match->positions.size(); ++i) {
            const int at = match->positions[i];
            ASSERT_TRUE(at >= 0 && at < text.size());
            ASSERT_TRUE(i == 0 || match->positions[i - 1] < at) << "ascending, each once";
            found += plain(text[at]);
        }
        for (const QChar unit : typed) {
            EXPECT_TRUE(unit.isSpace() || found.contains(plain(unit)));
        }
    }
    EXPECT_GT(matches, 400) << "the dice must throw something to judge";
}

TEST(FuzzyMatch, TakesTextsOfAnyLengthForWhatTheyAre) {
    const QString endless(100'000, u'a');
    EXPECT_TRUE(fuzzyMatch("aaa", endless));
    EXPECT_FALSE(fuzzyMatch(endless, "aaa"));
    EXPECT_FALSE(fuzzyMatch("b", endless + "b")) << "what stands so far behind nobody sees";
    EXPECT_EQ(fuzzyMatch(" \t ", "New Note")->positions.size(), 0U);
    EXPECT_FALSE(fuzzyMatch("a", ""));
}

}  // namespace
}  // namespace tesserine::app
