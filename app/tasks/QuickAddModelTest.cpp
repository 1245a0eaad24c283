#include "app/tasks/QuickAddModel.h"

#include "app/tasks/QuickAddCompletion.h"

#include <gtest/gtest.h>

#include <ranges>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

/// Ten in the morning of Saturday, 14 March 2026, in Berlin.
class QuickAddModelTest : public ::testing::Test {
public:
    void type(const QString& text, bool isNumberPriority = false) {
        model.setText(text, {clock.now(), calendar, isNumberPriority});
    }
    /// Letter by letter, as a person does.
    void typeSlowly(const QString& text) {
        for (int length = 1; length <= text.size(); ++length) {
            type(text.left(length));
        }
    }
    /// The sentence with its tokens in brackets.
    std::string marked() const {
        QString text = model.text();
        for (const auto& token : std::views::reverse(model.tokens())) {
            text.insert(token.end, u']').insert(token.begin, u'[');
        }
        return text.toStdString();
    }
    std::string words() const { return model.words().toStdString(); }

    Calendar calendar{"Europe/Berlin", 2};
    FixedClock clock{calendar.instant({.year = 2026, .month = 3, .day = 14, .hour = 10})};
    TaskService tasks{clock};
    QuickAddModel model{tasks};
};

TEST_F(QuickAddModelTest, MarksTokensWhereTheyStandInTheText) {
    struct Case {
        const char* typed;
        const char* marked;
        const char* words;
    };
    for (const auto& [typed, shown, words] : {
             Case{
                 "Send invoice tomorrow 9am #Work p1",
                 "Send invoice [tomorrow] [9am] [#Work] [p1]",
                 "Tomorrow, Sunday 15 March at 09:00 · P1 · #Work"},
             Case{
                 "Grüße 😀 today @büro",
                 "Grüße 😀 [today] [@büro]",
                 "Today, Saturday 14 March · @büro"},
             Case{"Gru\u0308n today", "Grün [today]", "Today, Saturday 14 March"},  // not composed
             Case{"Paint #“Home repairs” now", "Paint [#“Home repairs”] now", "#Home repairs"},
             Case{
                 "Review every 2 weeks mar 5 2027",
                 "Review [every 2 weeks] [mar 5 2027]",
                 "Friday 5 March 2027 · Every 2 weeks"},
             Case{"  ", "  ", ""},
         }) {
        type(typed);
        EXPECT_EQ(marked(), shown);
        EXPECT_EQ(this->words(), words) << typed;
    }
}

TEST_F(QuickAddModelTest, ANumberAloneIsAPriorityOnlyWhenThePreferenceSaysSo) {
    type("Buy 2 of 3 eggs");
    EXPECT_EQ(marked(), "Buy 2 of 3 eggs");
    EXPECT_EQ(model.draft().title, "Buy 2 of 3 eggs");
    type("Buy 2 eggs p1");
    EXPECT_EQ(marked(), "Buy 2 eggs [p1]") << "a marked one still counts";
    type("Buy 2 eggs", true);
    EXPECT_EQ(marked(), "Buy [2] eggs");
    EXPECT_EQ(model.draft().priority, TaskPriority::p2);
}

TEST_F(QuickAddModelTest, WhatWasTurnedBackStaysTextWhileTheRestIsEdited) {
    type("Call mum today #Home");
    model.turnBack(*model.tokenEndingAt(14));
    EXPECT_EQ(marked(), "Call mum today [#Home]");
    type("Please call mum today #Home");
    EXPECT_EQ(marked(), "Please call mum today [#Home]") << "moved along";
    type("Please call mum today #Homes p1");
    EXPECT_EQ(marked(), "Please call mum today [#Homes] [p1]");
    EXPECT_EQ(model.draft().title, "Please call mum today");
    EXPECT_FALSE(model.draft().due);

    type("Please call mum toda #Homes p1");
    type("Please call mum today #Homes p1");
    EXPECT_EQ(marked(), "Please call mum [today] [#Homes] [p1]") << "typed anew";
    model.turnBack(*model.tokenAt(17));
    EXPECT_TRUE(model.recogniseAgain(17));
    EXPECT_EQ(marked(), "Please call mum [today] [#Homes] [p1]");
    EXPECT_FALSE(model.recogniseAgain(17));
}

TEST_F(QuickAddModelTest, TheNewestTokenIsTurnedBackFirst) {
    typeSlowly("tomorrow 9am Call");
    type("#Work tomorrow 9am Call");
    EXPECT_EQ(marked(), "[#Work] [tomorrow] [9am] Call");
    std::vector<std::string> steps;
    while (model.turnBackNewest()) {
        steps.push_back(marked());
    }
    EXPECT_EQ(
        steps,
        (std::vector<std::string>{
            "#Work [tomorrow] [9am] Call",
            "#Work [tomorrow] 9am Call",
            "#Work tomorrow 9am Call"}));
}

TEST_F(QuickAddModelTest, ADateThatNobodyTypedCanBeRefused) {
    type("Backup every monday");
    EXPECT_TRUE(model.isDueSuggested());
    EXPECT_EQ(words(), "Monday 16 March · Every Mon");
    model.refuseSuggestedDue();
    type("Backup every monday p2");
    EXPECT_EQ(words(), "Every Mon · P2");
    type("Backup every monday tomorrow");
    EXPECT_EQ(words(), "Tomorrow, Sunday 15 March · Every Mon") << "a typed date counts";
    type("");
    type("Backup daily");
    EXPECT_TRUE(model.isDueSuggested()) << "another sentence";
}

TEST_F(QuickAddModelTest, TheListGivesWhatTheSentenceLeavesOpen) {
    model.setDefaults({"Garden", "home", calendar.startOfDay(clock.now())});
    type("Water plants");
    EXPECT_EQ(words(), "Today, Saturday 14 March · #Garden · @home");
    EXPECT_TRUE(model.isDueSuggested());
    type("Water plants tomorrow #Work @Home");
    EXPECT_EQ(words(), "Tomorrow, Sunday 15 March · #Work · @Home");
    EXPECT_FALSE(model.isDueSuggested());
    model.clear();
    EXPECT_FALSE(model.isDueSuggested()) << "an empty bar suggests nothing";
}

TEST_F(QuickAddModelTest, ATimeOrARuleIsOfTheDayThatWasChosenInTheCalendar) {
    const auto choose = [this](int day) {
        model.setDefaults({.dueDay = calendar.instant({.year = 2026, .month = 3, .day = day})});
    };
    struct Case {
        int day;
        const char* typed;
        const char* words;
    };
    for (const auto& [day, typed, words] : {
             Case{28, "Lunch 1pm", "Saturday 28 March at 13:00"},
             Case{28, "Lunch 8am", "Saturday 28 March at 08:00"},
             Case{12, "Lunch 1pm", "Thursday 12 March at 13:00"},  // it is written down afterwards
             Case{28, "Lunch tomorrow 1pm", "Tomorrow, Sunday 15 March at 13:00"},
             Case{28, "Yoga every week", "Saturday 28 March · Every week"},
             Case{28, "Yoga every week 8am", "Saturday 28 March at 08:00 · Every week"},
             Case{28, "Yoga every tue", "Tuesday 31 March · Every Tue"},
             Case{31, "Rent monthly", "Tuesday 31 March · Every month on the 31st"},
             Case{14, "Lunch 1pm", "Today, Saturday 14 March at 13:00"},
             Case{14, "Lunch 8am", "Tomorrow, Sunday 15 March at 08:00"},  // it has passed
         }) {
        choose(day);
        type(typed);
        EXPECT_EQ(this->words(), words) << day << " " << typed;
    }
    choose(28);
    type("Lunch 1pm");
    EXPECT_FALSE(model.isDueSuggested()) << "the time was typed";
}

TEST_F(QuickAddModelTest, ASentenceOfTokensOnlyMakesNoTask) {
    type("in 3 weeks");
    EXPECT_FALSE(model.isComplete());
    model.turnBackNewest();
    EXPECT_TRUE(model.isComplete());
    model.clear();
    EXPECT_FALSE(model.isComplete());
    EXPECT_EQ(words(), "");
}

TEST(QuickAddCompletion, CompletesTheNameBeforeTheCursor) {
    struct Case {
        const char* text;
        int cursor;
        const char* name;
    };
    for (const auto& [text, cursor, name] : {
             Case{"Call #Wo", 8, "#5:Wo"},
             Case{"Call #Wo today", 7, "#5:W"},
             Case{"#", 1, "#0:"},
             Case{"Plan @\"next st", 14, "@5:next st"},
             Case{"Plan @\"next\" st", 15, "-"},  // behind a whole one
             Case{"mail a@b", 8, "-"},
             Case{"Call #Wo ", 9, "-"},
             Case{"", 0, "-"},
         }) {
        const auto found = nameBeingTyped(text, cursor);
        const QString shown =
            found ? QString("%1%2:%3").arg(found->sign).arg(found->begin).arg(found->letters) : "-";
        EXPECT_EQ(shown.toStdString(), name) << text;
    }
}

TEST(QuickAddCompletion, OffersNamesThatHoldTheLettersBestFirst) {
    const QStringList names{"Café", "Decaf", "Home", "cafeteria"};
    EXPECT_EQ(namesLike("cafe", names, 9), (QStringList{"Café", "cafeteria"}));
    EXPECT_EQ(namesLike("CAF", names, 2), (QStringList{"Café", "cafeteria"}));
    EXPECT_EQ(namesLike("caf", names, 9), (QStringList{"Café", "cafeteria", "Decaf"}));
    EXPECT_EQ(nameInSentence(u'#', "R&D/Ops"), "#R&D/Ops");
    EXPECT_EQ(nameInSentence(u'@', "next step"), "@\"next step\"");
}

}  // namespace
}  // namespace tesserine::app
