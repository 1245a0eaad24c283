#include "app/tasks/TaskWords.h"

#include "base/Calendar.h"
#include "core/tasks/TaskService.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

/// In Berlin it is past midnight already: Sunday, 15 March 2026, half past twelve at night.
const Instant now = *Instant::parseISO("2026-03-14T23:30:00Z");
const Calendar calendar("Europe/Berlin", 2);
const TaskWords words(now, calendar);

TEST(TaskWords, TellsADateBesideAnotherAsOneWouldSayIt) {
    struct Case {
        const char* date;
        bool hasTime;
        const char* shortly;
        const char* fully;
        bool isOverdue;
    };
    for (const auto& [date, hasTime, shortly, fully, isOverdue] : {
             Case{"2026-03-14T23:00:00Z", false, "Today", "Today, Sunday 15 March", false},
             Case{"2026-03-14T22:59:00Z", false, "Yesterday", "Yesterday, Saturday 14 March", true},
             // At midnight it was half an hour ago, and that is a time that has passed.
             Case{
                 "2026-03-14T23:00:00Z",
                 true,
                 "Today 00:00",
                 "Today, Sunday 15 March at 00:00",
                 true},
             Case{
                 "2026-03-14T23:30:00Z",
                 true,
                 "Today 00:30",
                 "Today, Sunday 15 March at 00:30",
                 false},
             Case{
                 "2026-03-16T07:05:00Z",
                 true,
                 "Tomorrow 08:05",
                 "Tomorrow, Monday 16 March at 08:05",
                 false},
             Case{"2026-03-16T23:00:00Z", false, "Tue 17 Mar", "Tuesday 17 March", false},
             // Behind the change to summer time a day still begins at midnight.
             Case{"2026-03-29T22:00:00Z", false, "Mon 30 Mar", "Monday 30 March", false},
             Case{"2026-12-30T23:00:00Z", false, "Thu 31 Dec", "Thursday 31 December", false},
             Case{"2026-12-31T23:00:00Z", false, "1 Jan 2027", "Friday 1 January 2027", false},
             Case{"2025-12-31T22:00:00Z", false, "31 Dec 2025", "Wednesday 31 December 2025", true},
         }) {
        const TaskDue due{.date = *Instant::parseISO(date), .hasTime = hasTime};
        EXPECT_EQ(words.due(due).toStdString(), shortly) << date;
        EXPECT_EQ(words.longDue(due).toStdString(), fully) << date;
        EXPECT_EQ(words.isOverdue(due), isOverdue) << date;
    }
    EXPECT_EQ(words.month(now), "March 2026");
    EXPECT_FALSE(words.isToday(*Instant::parseISO("2026-03-14T22:59:59Z")));
    EXPECT_TRUE(words.isToday(*Instant::parseISO("2026-03-15T22:59:59Z")));
}

}  // namespace
}  // namespace tesserine::app
