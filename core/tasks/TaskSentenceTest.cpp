#include "core/tasks/QuickAddParser.h"
#include "core/tasks/TaskFixture.h"

namespace tesserine {
namespace {

class TaskSentenceTest : public test::TaskFixture {
protected:
    CDTask& type(const char* sentence) {
        return service.createFromSentence(context, sentence, calendar);
    }
};

TEST_F(TaskSentenceTest, ASentenceFillsAllOfATask) {
    service.projects().create(context, "Work");
    const CDTask& task = type("Send invoice tomorrow 9am #wORK @Office @office @home p1");
    const auto snapshot = TaskSnapshot::of(task, collator);
    EXPECT_EQ(snapshot.title, "Send invoice");
    EXPECT_EQ(local(snapshot.dueDate), "2026-03-15T09:00");
    EXPECT_TRUE(snapshot.dueHasTime);
    EXPECT_EQ(snapshot.priority, TaskPriority::p1);
    EXPECT_EQ(task.project->name, "Work");
    EXPECT_EQ(snapshot.labels, (std::vector<std::string>{"home", "Office"}));

    // Nothing typed is dropped: a project and labels that are not there are made.
    EXPECT_EQ(type("Paint #\"Summer house\"").project->name, "Summer house");
    EXPECT_EQ(type("Nap").project->isInbox, true);
    EXPECT_EQ(type("in 3 weeks").title, "");
}

TEST_F(TaskSentenceTest, ARuleWithoutADateBeginsOnTheFirstDayThatFits) {
    // It is Saturday, the 14th, at ten.
    struct Case {
        const char* sentence;
        const char* due;
        bool hasTime;
    };
    for (const auto& [sentence, due, hasTime] : {
             Case{"Backup daily", "2026-03-14T00:00", false},
             Case{"Backup daily at 10:00", "2026-03-15T10:00", true},
             Case{"Backup daily at 10:01", "2026-03-14T10:01", true},
             Case{"Swim every saturday", "2026-03-14T00:00", false},
             Case{"Swim every saturday 9am", "2026-03-21T09:00", true},
             Case{"Swim every mon and wed", "2026-03-16T00:00", false},
             Case{"Standup weekdays", nullptr, false},  // "every" is missing
             Case{"Standup every weekday 8am", "2026-03-16T08:00", true},
             Case{"Rent every month on the 3rd", "2026-04-03T00:00", false},
             Case{"Rent every month on the 31st", "2026-03-31T00:00", false},
             Case{"Review yearly", "2026-03-14T00:00", false},
             Case{"Call every week tomorrow 5pm", "2026-03-15T17:00", true},  // a date wins
         }) {
        SCOPED_TRACE(sentence);
        const CDTask& task = type(sentence);
        EXPECT_EQ(local(task.dueDate), due == nullptr ? "-" : due);
        EXPECT_EQ(task.dueHasTime, hasTime);
    }
}

TEST_F(TaskSentenceTest, AMonthlyRuleThatBeginsLateInAMonthKeepsItsDay) {
    struct Case {
        const char* sentence;
        const char* rule;
    };
    for (const auto& [sentence, rule] : {
             Case{"Rent monthly 31 march", "unit=month;interval=1;dayOfMonth=31"},
             Case{"Rent monthly 29 march", "unit=month;interval=1;dayOfMonth=29"},
             Case{"Rent monthly 28 march", "unit=month;interval=1"},
             Case{"Tax yearly 31 march", "unit=year;interval=1;dayOfMonth=31;monthOfYear=3"},
             Case{"Bins every 2 weeks 31 march", "unit=week;interval=2"},
             Case{"Rent every month on the 5th 31 march", "unit=month;interval=1;dayOfMonth=5"},
         }) {
        EXPECT_EQ(type(sentence).recurrenceRule, rule) << sentence;
    }

    CDTask& later = addDue("Rent", "2026-03-31T09:00");
    service.repeat(later, {.unit = RecurrenceRule::Unit::month}, calendar);
    EXPECT_EQ(later.recurrenceRule, "unit=month;interval=1;dayOfMonth=31");
    CDTask& undated = add({.title = "Swim"});
    service.repeat(undated, {.unit = RecurrenceRule::Unit::week, .weekdays = {2}}, calendar);
    EXPECT_EQ(local(undated.dueDate), "2026-03-16T00:00");
}

}  // namespace
}  // namespace tesserine
