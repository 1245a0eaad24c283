#include "cli/Arguments.h"

#include "cli/Help.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tesserine::cli {
namespace {

using Line = std::vector<std::string>;

TEST(Arguments, OptionsMayStandAnywhereAndEndAtTheDashes) {
    struct Case {
        Line line;
        std::string_view command;
        std::string title;
        Line words;
    };
    for (const auto& [line, command, title, words] : {
             Case{{"note", "edit", "Plan", "--title", "New"}, "note edit", "New", {"Plan"}},
             Case{{"--json", "note", "edit", "--title=New", "Plan"}, "note edit", "New", {"Plan"}},
             Case{{"note", "--library", "L", "edit", "Plan"}, "note edit", "", {"Plan"}},
             Case{{"note", "edit", "--", "--title"}, "note edit", "", {"--title"}},
             Case{{"note", "edit", "--title", "--json", "-"}, "note edit", "--json", {"-"}},
             Case{{"note", "edit", "--title=", "a"}, "note edit", "", {"a"}},
             Case{{"backup"}, "backup", "", {}},
             Case{{"backup", "list"}, "backup list", "", {}},
             Case{{"note", "show", "list"}, "note show", "", {"list"}},
         }) {
        const ParsedLine parsed = parseLine(line);
        SCOPED_TRACE(testing::PrintToString(line));
        ASSERT_NE(parsed.command, nullptr);
        EXPECT_EQ(parsed.command->path, command);
        EXPECT_EQ(parsed.arguments.text("title").value_or(""), title);
        EXPECT_EQ(parsed.arguments.wordsFrom(0), words);
    }
}

TEST(Arguments, WrongUsageIsToldInASentence) {
    struct Case {
        Line line;
        std::string sentence;
    };
    for (const auto& [line, sentence] : {
             Case{{"nte"}, "There is no command “nte”. Did you mean “note”?"},
             Case{{"note", "lst"}, "There is no command “note lst”. Did you mean “note list”?"},
             Case{{"zzzzzzzz"}, "There is no command “zzzzzzzz”."},
             Case{{"trash"}, "“trash” must be followed by empty or purge."},
             Case{
                 {"note", "list", "--notbook", "x"},
                 "There is no option “--notbook” here. Did you mean “--notebook”?"},
             Case{{"note", "--title", "x", "add"}, "There is no option “--title” here."},
             Case{{"note", "list", "-n"}, "There is no option “-n” here."},
             Case{{"note", "list", "--limit"}, "--limit must be followed by N."},
             Case{{"note", "list", "--pinned=yes"}, "--pinned takes no value."},
             Case{
                 {"note", "list", "--limit", "1", "--limit", "2"},
                 "--limit may be given once only."},
             Case{{"note", "list", "--sort", "size"}, "--sort takes updated, created or title."},
             Case{{"note", "pin"}, "“note pin” needs NOTE."},
             Case{{"note", "pin", "a", "b"}, "“b” is one word too many."},
             Case{{"backup", "--to", "x", "list"}, "There is no option “--to” here."},
             Case{{"notebook", "favorite", "x", "maybe"}, "“maybe” is not on or off."},
         }) {
        SCOPED_TRACE(testing::PrintToString(line));
        try {
            parseLine(line);
            ADD_FAILURE() << "was accepted";
        } catch (const UsageError& error) {
            EXPECT_EQ(error.what(), sentence);
        }
    }
}

TEST(Arguments, NumbersAreWholeAndInRange) {
    for (const char* typed : {"0", "-1", "1.5", "7x", "", "99999999999999999999"}) {
        SCOPED_TRACE(typed);
        const ParsedLine parsed = parseLine({"note", "list", "--limit", typed});
        EXPECT_THROW(parsed.arguments.integer("limit", 1, 100), UsageError);
    }
    EXPECT_EQ(
        parseLine({"note", "list", "--limit", "100"}).arguments.integer("limit", 1, 100), 100);
}

/// An example as a shell takes it apart: words, single quotes, and only what follows a pipe.
Line shellWords(std::string_view example) {
    Line words;
    std::string word;
    bool isQuoted = false;
    bool hasWord = false;
    for (const char c : std::string(example) + " ") {
        if (c == '\'') {
            isQuoted = !isQuoted;
            hasWord = true;
        } else if (c == ' ' && !isQuoted) {
            if (hasWord) words.push_back(word);
            if (word == "|") words.clear();
            word.clear();
            hasWord = false;
        } else {
            word += c;
            hasWord = true;
        }
    }
    return words;
}

TEST(Help, EveryCommandShowsAnExampleOfItself) {
    for (const Command& command : commands()) {
        SCOPED_TRACE(command.path);
        Line words = shellWords(command.example);
        ASSERT_FALSE(words.empty());
        EXPECT_EQ(words.front(), "tesserine");
        words.erase(words.begin());
        const ParsedLine parsed = parseLine(words);
        ASSERT_NE(parsed.command, nullptr);
        EXPECT_EQ(parsed.command->path, command.path);
        EXPECT_NE(commandHelp(command).find(command.example), std::string::npos);
        EXPECT_FALSE(command.summary.ends_with('.'));
    }
}

TEST(Help, ManualAndCompletionsKnowEveryCommandAndOption) {
    const std::string manual = manualPage();
    const std::string bash = bashCompletion();
    const std::string zsh = zshCompletion();
    const std::string fish = fishCompletion();
    const auto expectOptions = [&](const std::vector<Option>& options) {
        for (const Option& option : options) {
            const std::string name(option.name);
            EXPECT_NE(bash.find("--" + name), std::string::npos) << name;
            EXPECT_NE(zsh.find("--" + name + "["), std::string::npos) << name;
            EXPECT_NE(fish.find(" -l " + name), std::string::npos) << name;
        }
    };
    expectOptions(commonOptions());
    for (const Command& command : commands()) {
        SCOPED_TRACE(command.path);
        EXPECT_NE(bash.find("'" + std::string(command.path) + "'"), std::string::npos);
        EXPECT_NE(zsh.find("'" + std::string(command.path) + "'"), std::string::npos);
        expectOptions(command.options);
    }
    EXPECT_NE(manual.find("\\fB\\-\\-version\\fR"), std::string::npos);
    EXPECT_TRUE(std::ranges::none_of(manual, [](char c) { return (c & 0x80) != 0; }));
    EXPECT_NE(
        manual.find("\\fBtesserine note attach\\fR \\fINOTE\\fR \\fIFILE\\fR\\ ..."),
        std::string::npos);
}

}  // namespace
}  // namespace tesserine::cli
