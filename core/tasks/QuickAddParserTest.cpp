#include "core/tasks/QuickAddParser.h"

#include "base/Text.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

namespace tesserine {
namespace {

/// The calendar's fields of an instant, as a person writes them.
std::string wallClock(Instant instant, const Calendar& calendar) {
    std::string text = calendar.local(instant).iso().substr(0, 16);
    text[10] = ' ';
    return text;
}

/// What was understood, as one line: the title, then each field there is.
std::string outcome(const QuickAddResult& result, const Calendar& calendar) {
    std::string line = result.title;
    const auto add = [&](const std::string& field) { line += " | " + field; };
    if (result.dueDate) {
        const std::string due = wallClock(*result.dueDate, calendar);
        add(result.dueHasTime ? due : due.substr(0, 10));
    } else if (result.dueTime) {
        add("at " + std::to_string(result.dueTime->hour) + ":"
            + std::to_string(result.dueTime->minute));
    }
    if (result.priority) add("p" + std::to_string(static_cast<int>(*result.priority)));
    if (result.projectName) add("#" + *result.projectName);
    for (const std::string& label : result.labels) {
        add("@" + label);
    }
    if (result.recurrence) add(result.recurrence->storageString());
    return line;
}

std::string tokens(const QuickAddResult& result) {
    std::string line;
    for (const RecognisedToken& token : result.recognisedTokens) {
        line += "[" + token.text + "](" + std::string(rawValue(token.kind)) + ")";
    }
    return line;
}

std::string repeated(std::string_view piece, std::size_t count) {
    std::string text;
    for (; count > 0; --count) {
        text += piece;
    }
    return text;
}

std::string withoutSpaces(std::string_view text) {
    std::string words = text::collapsed(text);
    std::erase(words, ' ');
    return words;
}

/// Wednesday, 11 March 2026, ten in the morning.
class QuickAddParserTest : public testing::Test {
protected:
    QuickAddResult parse(std::string_view sentence, std::vector<TextRange> leftAlone = {}) const {
        const Instant now = calendar_.instant({.year = 2026, .month = 3, .day = 11, .hour = 10});
        return QuickAddParser(now, calendar_).parse(sentence, leftAlone);
    }

    struct Case {
        const char* sentence;
        const char* outcome;
    };
    void check(std::initializer_list<Case> cases) const {
        for (const auto& [sentence, expected] : cases) {
            EXPECT_EQ(outcome(parse(sentence), calendar_), expected) << sentence;
        }
    }

    Calendar calendar_{"UTC"};
};

TEST_F(QuickAddParserTest, ReadsASentenceWithEverythingInIt) {
    const auto result = parse("Send invoice tomorrow 9am #Work p1");
    EXPECT_EQ(outcome(result, calendar_), "Send invoice | 2026-03-12 09:00 | p1 | #Work");
    EXPECT_EQ(tokens(result), "[#Work](project)[p1](priority)[tomorrow](date)[9am](time)");

    const auto other =
        parse("!!2  every mon at\tnoon @home Water the plants next week @a/b #\"Big Plan\"");
    EXPECT_EQ(
        outcome(other, calendar_),
        "at Water the plants | 2026-03-18 12:00 | p2 | #Big Plan | @home | @a/b | "
        "unit=week;interval=1;weekdays=2");
    EXPECT_EQ(
        tokens(other),
        "[#\"Big Plan\"](project)[@home](label)[@a/b](label)[!!2](priority)"
        "[every mon](recurrence)[next week](date)[noon](time)");
}

TEST_F(QuickAddParserTest, KeepsWhatItDoesNotKnow) {
    check({
        {"Call the plumber", "Call the plumber"},
        {"  two \t words\u3000and\u00A0more\n", "two words and more"},
        {"", ""},
        {"in 3 weeks", " | 2026-04-01"},
        {"Buy milk tomorrow, then eggs", "Buy milk, then eggs | 2026-03-12"},
        {"Pay 1,234.50 rent friday", "Pay 1,234.50 rent | 2026-03-13"},
        {"Mail ada@example.com about C#major", "Mail ada@example.com about C#major"},
    });
}

TEST_F(QuickAddParserTest, ReadsDates) {
    check({
        {"x 2026-03-05", "x | 2026-03-05"},
        {"x 2026-2-30", "x 2026-2-30"},
        {"x 1899-12-31 y 2199-12-31", "x 1899-12-31 y | 2199-12-31"},
        {"x TODAY", "x | 2026-03-11"},
        {"x tmrw", "x | 2026-03-12"},
        {"x tmw", "x | 2026-03-12"},
        {"today's report", "today's report"},
        {"today’s report", "today’s report"},
        {"call today'", "call' | 2026-03-11"},
        {"tonight prepare for tomorrow", "prepare for tomorrow | 2026-03-11 19:00"},
        {"pay today not tomorrow", "pay not tomorrow | 2026-03-11"},
        // month, then day; passed days are next year's
        {"x 3/11", "x | 2026-03-11"},
        {"x 3/10", "x | 2027-03-10"},
        {"x 13/4", "x 13/4"},
        {"x 2/29", "x 2/29"},
        {"x 2/29/28", "x | 2028-02-29"},
        {"x 3/5/2030", "x | 2030-03-05"},
        {"x 3/5/275", "x 3/5/275"},
        {"x 3/5/20275", "x 3/5/20275"},
        {"1/2 cup", "cup | 2027-01-02"},
        {"x mar 15", "x | 2026-03-15"},
        {"March 5th, 2027 x", "x | 2027-03-05"},
        {"x sept. 1st", "x | 2026-09-01"},
        {"mar 5 1500 words", "1500 words | 2027-03-05"},
        {"mar 5, 1500 words", ", 1500 words | 2027-03-05"},
        {"x march 52027", "x | 2027-03-05"},
        {"x feb 29 2027", "x feb 29 2027"},
        {"x 5 March", "x | 2027-03-05"},
        {"5th mar. 2027 x", "x | 2027-03-05"},
        {"x 31 april", "x 31 april"},
        {"5 March 10:30am x", "x | 2027-03-05 10:30"},
        // from today on
        {"x in 3 weeks", "x | 2026-04-01"},
        {"x in 1 day", "x | 2026-03-12"},
        {"x in ٣ months", "x | 2026-06-11"},
        {"x in 999 years", "x | 3025-03-11"},
        {"x in 0 days", "x in 0 days"},
        {"x in 1000 days", "x in 1000 days"},
        {"in 3 days' time", "' time | 2026-03-14"},
        {"x next month", "x | 2026-04-11"},
        {"x Next\u2003Week", "x | 2026-03-18"},
        // it is a Wednesday
        {"x thursday", "x | 2026-03-12"},
        {"x tues", "x | 2026-03-17"},
        {"x wed", "x | 2026-03-18"},
        {"x this weds", "x | 2026-03-11"},
        {"x next wednesday", "x | 2026-03-18"},
        {"x this tue", "x | 2026-03-17"},
        {"x next fri", "x | 2026-03-20"},
        {"sun cream", "cream | 2026-03-15"},
        {"sunset", "sunset"},
        {"fridays", "fridays"},
        // the first form in its order counts, and in it the first place
        {"fri 5 may 6 june", "fri 5 june | 2026-05-06"},
        {"13/4 or 4/13 or 4/14", "13/4 or or 4/14 | 2026-04-13"},
    });
}

TEST_F(QuickAddParserTest, ShortMonthsEndEarlier) {
    const Instant now = calendar_.instant({.year = 2027, .month = 12, .day = 31});
    const QuickAddParser parser(now, calendar_);
    for (const auto& [sentence, expected] : {
             std::pair{"x next month", "x | 2028-01-31"},
             std::pair{"x in 2 months", "x | 2028-02-29"},
             std::pair{"x in 14 months", "x | 2029-02-28"},
             std::pair{"x feb 29", "x | 2028-02-29"},
             std::pair{"x in 1 year", "x | 2028-12-31"},
         }) {
        EXPECT_EQ(outcome(parser.parse(sentence), calendar_), expected);
    }
}

TEST_F(QuickAddParserTest, ReadsTimes) {
    check({
        {"x 9am", "x | 2026-03-12 09:00"},  // nine has passed
        {"x 10AM", "x | 2026-03-12 10:00"},
        {"x at 10:01 am", "x | 2026-03-11 10:01"},
        {"x 12am fri", "x | 2026-03-13 00:00"},
        {"x 12pm fri", "x | 2026-03-13 12:00"},
        {"x 9 a.m. fri", "x | 2026-03-13 09:00"},
        {"x 9:05 P.M.", "x | 2026-03-11 21:05"},
        {"x 9 p.m.x", "x 9 p.m.x"},
        {"x 13pm", "x 13pm"},
        {"x 0am", "x 0am"},
        {"x 5:60pm", "x 5:60pm"},
        {"x at 17:30", "x | 2026-03-11 17:30"},
        {"x at 00:00", "x | 2026-03-12 00:00"},
        {"x at 25:70", "x at 25:70"},
        {"x at 17:30:15", "x at 17:30:15"},
        {"x at 5", "x at 5"},
        {"x 17:30", "x 17:30"},
        {"lunch noon", "lunch | 2026-03-11 12:00"},
        {"x midnight", "x | 2026-03-12 00:00"},
        {"x tomorrow midnight", "x | 2026-03-12 00:00"},
        {"x tonight", "x | 2026-03-11 19:00"},
        {"x tonight at 8pm", "x | 2026-03-11 20:00"},
        {"x 2026-03-15 tonight", "x | 2026-03-15 19:00"},
        {"99am or 9am", "99am or | 2026-03-12 09:00"},
        {"noon or at 17:30 or 3pm", "noon or at 17:30 or | 2026-03-11 15:00"},
    });
    EXPECT_EQ(tokens(parse("tonight")), "[tonight](date)");
    EXPECT_EQ(tokens(parse("2026-03-15 tonight")), "[2026-03-15](date)[tonight](time)");
}

TEST_F(QuickAddParserTest, ReadsPriorities) {
    check({
        {"x p1", "x | p1"},
        {"x P2 y", "x y | p2"},
        {"x !3", "x | p3"},
        {"x !!!1", "x | p1"},
        {"x ! 4", "x | p4"},
        {"x !p2", "x | p2"},
        {"x p5 !0 !!!!1", "x p5 !0 !!!!1"},
        {"xp1", "xp1"},
        {"p1st", "p1st"},
        {"p1.5 or p2:30", "p1.5 or p2:30"},
        {"Buy 2 eggs", "Buy eggs | p2"},
        {"Buy 2 tickets p1", "Buy 2 tickets | p1"},
        {"Buy 2 or 3", "Buy or 3 | p2"},
        {"Read chapter 4.", "Read chapter. | p4"},
        {"2-day trip", "2-day trip"},
        {"4:30pm call", "call | 2026-03-11 16:30"},
        {"3.5 km", "3.5 km"},
        {"3/4", " | 2027-03-04"},
        {"2,5 l", "2,5 l"},
        {"(2) ٣", "(2) ٣"},
        {"March 3", " | 2027-03-03"},
        {"every 2 weeks", " | unit=week;interval=2"},
    });
}

TEST_F(QuickAddParserTest, ReadsProjectsAndLabels) {
    const std::string sixtyFour(64, 'n');
    check({
        {"x #Work/R&D_2-a, y", "x, y | #Work/R&D_2-a"},
        {"x #\" Big Plan \" y", "x y | #Big Plan"},
        {"x #“Big Plan” @”a b“", "x | #Big Plan | @a b"},
        {"x #\"  \" #b", "x #\" \" | #b"},
        {"x #a #b", "x #b | #a"},
        {"@a x @\"b c\" @a", "x | @a | @b c | @a"},
        {"#Cafe\u0301 x", "x | #Caf\u00E9"},
        {"#हिन्दी x", "#हिन्दी x"},  // no name ends inside a character
        {"#\"हिन्दी\" x", "x | #हिन्दी"},
        {"# x @ y #", "# x @ y #"},
        {"#\"due fri p1 @b\" x", "x | #due fri p1 @b"},
        {"issue #4", "issue | #4"},
        {"x @a@b", "x@b | @a"},
    });
    EXPECT_EQ(parse("x #" + sixtyFour + "n").projectName, sixtyFour);
    EXPECT_EQ(parse("x #" + sixtyFour + "n").title, "x n");
    EXPECT_EQ(parse("x #\"" + sixtyFour + "\"").projectName, sixtyFour);
    EXPECT_FALSE(parse("x #\"" + sixtyFour + "n\"").projectName);
}

TEST_F(QuickAddParserTest, ReadsRepetitions) {
    check({
        {"Backup daily", "Backup | unit=day;interval=1"},
        {"x Annually", "x | unit=year;interval=1"},
        {"x yearly or weekly", "x or weekly | unit=year;interval=1"},
        {"Weekly report every 2 weeks", "Weekly report | unit=week;interval=2"},
        {"x every weekday 9am", "x | at 9:0 | unit=week;interval=1;weekdays=2,3,4,5,6"},
        {"x every 3 years", "x | unit=year;interval=3"},
        {"x every monday", "x | unit=week;interval=1;weekdays=2"},
        {"x every 2 fridays", "x | unit=week;interval=2;weekdays=6"},
        {"x every mon, wed and fri", "x | unit=week;interval=1;weekdays=2,4,6"},
        {"x every 2 weeks mon , thu", "x | unit=week;interval=2;weekdays=2,5"},
        {"x every 2 weeks on monday", "x on | 2026-03-16 | unit=week;interval=2"},
        {"x every month on the 31st", "x | unit=month;interval=1;dayOfMonth=31"},
        {"x every year on the 3", "x | unit=year;interval=1;dayOfMonth=3"},
        {"x every month on the 32nd", "x on the 32nd | unit=month;interval=1"},
        {"x every week on the 2nd", "x on the 2nd | unit=week;interval=1"},
        {"every mondays on the 5th", "on the 5th | unit=week;interval=1;weekdays=2"},
        {"every day sun hat", "sun hat | unit=day;interval=1"},
        {"every day sunshine", "sunshine | unit=day;interval=1"},
        {"every month mon on the 5th", "mon on the 5th | unit=month;interval=1"},
        {"every sunset", "every sunset"},
        {"every daylight", "every daylight"},
        {"every friday, monthly", "every, | 2026-03-13 | unit=month;interval=1"},
        {"x every 0 days", "x every 0 days"},
        {"x every 1000 days", "x every 1000 days"},
        {"x every 99999999999999999999 days", "x every 99999999999999999999 days"},
        {"x every 999 days tomorrow", "x | 2026-03-12 | unit=day;interval=999"},
    });
}

TEST_F(QuickAddParserTest, ClockChangesMoveOnlyTimesThatDoNotExist) {
    struct Day {
        const char* zone;
        const char* now;
        const char* sentence;
        const char* due;
    };
    for (const auto& [zone, now, sentence, due] : {
             // one hour less on 29 March, one more on 25 October
             Day{"Europe/Berlin", "2026-03-28T23:30:00", "x tomorrow 2:30am", "2026-03-29 03:30"},
             Day{"Europe/Berlin", "2026-03-28T23:30:00", "x tomorrow", "2026-03-29 00:00"},
             Day{"Europe/Berlin", "2026-03-28T12:00:00", "x in 2 days 9am", "2026-03-30 09:00"},
             Day{"Europe/Berlin", "2026-10-24T12:00:00", "x sun 2:30am", "2026-10-25 02:30"},
             Day{"America/New_York", "2026-03-07T12:00:00", "x in 1 week 9am", "2026-03-14 09:00"},
             Day{"Australia/Lord_Howe", "2026-10-03T12:00:00", "x 2:15am", "2026-10-04 02:45"},
             // no midnight on that day
             Day{"America/Santiago", "2026-09-05T12:00:00", "x tomorrow", "2026-09-06 01:00"},
             // already tomorrow in the east
             Day{"Pacific/Auckland", "2026-03-12T00:30:00", "x today", "2026-03-12 00:00"},
         }) {
        SCOPED_TRACE(std::string(zone) + ": " + sentence);
        const Calendar calendar(zone);
        const QuickAddParser parser(calendar.instant(*LocalTime::parseISO(now)), calendar);
        const auto result = parser.parse(sentence);
        ASSERT_TRUE(result.dueDate);
        EXPECT_EQ(wallClock(*result.dueDate, calendar), due);
    }
}

TEST_F(QuickAddParserTest, ATokenTurnedBackIntoTextStaysInTheTitle) {
    const std::string sentence = "Read 2 books friday 9am #a #b";
    const auto without = [&](std::initializer_list<std::string_view> pieces) {
        std::vector<TextRange> ranges;
        for (const std::string_view piece : pieces) {
            const std::size_t begin = sentence.find(piece);
            ranges.push_back({begin, begin + piece.size()});
        }
        return outcome(parse(sentence, ranges), calendar_);
    };
    EXPECT_EQ(without({}), "Read books #b | 2026-03-13 09:00 | p2 | #a");
    EXPECT_EQ(without({"friday", "2"}), "Read 2 books friday #b | 2026-03-12 09:00 | #a");
    EXPECT_EQ(without({"#a", "9am"}), "Read books 9am #a | 2026-03-13 | p2 | #b");
    // What stands beside the token is free, what shares a letter with it is not.
    EXPECT_EQ(without({"books ", " 9am"}), "Read books 9am #b | 2026-03-13 | p2 | #a");
    EXPECT_EQ(without({"y"}), "Read books friday #b | 2026-03-12 09:00 | p2 | #a");
}

TEST_F(QuickAddParserTest, TitleAndTokensLoseNothing) {
    const std::vector<std::string> pieces = {
        "every", "2",   "weeks",  "mon,",   "and",  "fri", "p1",  "!",    "#work", "@\"a b\"",
        "#\"",   "\"",  "at",     "9:30",   "am",   "mar", "5th", "2027", "1500",  "tomorrow",
        "3/4",   "🎉",   "in",     "day's",  "31st", "x",   "७",   "a.m.", "daily", "e\u0301",
        "שלום",  "#हि", "on the", "\u2003", "next", "“",   "#“",  "at",   "1,5",   "tonight",
    };
    test::SeededRandom random(7);
    const auto dice = [&](std::size_t sides) {
        std::array<std::uint8_t, 1> byte{};
        random.fill(byte);
        return byte[0] % sides;
    };
    for (int round = 0; round < 3000; ++round) {
        std::string sentence;
        for (std::size_t count = 1 + dice(9); count > 0; --count) {
            sentence += pieces[dice(pieces.size())];
            if (dice(5) != 0) sentence += ' ';
        }
        SCOPED_TRACE(sentence);
        const auto result = parse(sentence);
        std::string rest = result.sentence;
        for (const auto& [text, kind, range] : result.recognisedTokens) {
            EXPECT_EQ(result.sentence.substr(range.begin, range.end - range.begin), text);
            rest.replace(range.begin, text.size(), text.size(), ' ');
        }
        ASSERT_EQ(withoutSpaces(result.title), withoutSpaces(rest));
    }
}

TEST_F(QuickAddParserTest, HostileSentencesAreAnsweredAtOnce) {
    const std::string last = " p1";
    for (const std::string_view piece :
         {"\u0301", "\u0301\u0323", "🎉",          "שלום ",    "ﷺ",   "1",     "9 ",     "3/",
          "every ", "every 1",      "every mon ", ", and ",   "at ", "next ", "mar 5,", "a.",
          "!",      "p ",           " ",          "\t\u3000", "#\"", "@“"}) {
        SCOPED_TRACE(piece);
        const auto start = std::chrono::steady_clock::now();
        const std::size_t count = (QuickAddParser::longestSentence - last.size()) / piece.size();
        EXPECT_EQ(parse(repeated(piece, count) + last).priority, TaskPriority::p1);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    }
}

TEST_F(QuickAddParserTest, ATextLongerThanASentenceIsATitle) {
    const std::string text(QuickAddParser::longestSentence - 3, 'x');
    EXPECT_EQ(outcome(parse(text + " p1"), calendar_), text + " | p1");
    EXPECT_EQ(outcome(parse(text + "  p1"), calendar_), text + " p1");

    const std::size_t bytes = 1'000'000;
    for (const auto& [piece, kept] : {
             std::pair{"\u0301\u0323", "\u0301\u0323"},
             std::pair{"שלום🎉", "שלום🎉"},
             std::pair{"every\t mon\u3000 \n", "every mon "},
         }) {
        const std::size_t count = bytes / std::strlen(piece);
        const auto result = parse(repeated(piece, count) + "p1");
        EXPECT_EQ(result.title, repeated(kept, count) + "p1");
        EXPECT_TRUE(result.recognisedTokens.empty());
    }
}

}  // namespace
}  // namespace tesserine
