#include "core/tasks/TaskCalendarLayout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tesserine {
namespace {

Instant noon(const Calendar& calendar, const std::string& day) {
    return calendar.instant(LocalTime::parseISO(day + "T12:00").value());
}

/// A grid as a person reads it: a line for each week; days of other months stand in brackets, and
/// today has a star.
std::string grid(const std::vector<CalendarDayCell>& cells, const Calendar& calendar) {
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        std::string day = std::to_string(calendar.local(cells[i].date).day);
        if (!cells[i].isInDisplayedMonth) day = "(" + day + ")";
        if (cells[i].isToday) day += "*";
        text += day;
        text += i % 7 == 6 ? '\n' : ' ';
    }
    return text;
}

TEST(TaskCalendarLayout, MonthsTakeAsManyWeeksAsTheyNeed) {
    struct Case {
        const char* day;
        int firstWeekday;
        const char* grid;
    };
    for (const auto& [day, firstWeekday, expected] : {
             Case{
                 "2026-02-10",
                 1,
                 "1 2 3 4 5 6 7\n"
                 "8 9 10 11 12 13 14\n"
                 "15 16 17 18 19 20 21\n"
                 "22 23 24 25 26 27 28*\n"},
             Case{
                 "2026-02-28",
                 2,
                 "(26) (27) (28) (29) (30) (31) 1\n"
                 "2 3 4 5 6 7 8\n"
                 "9 10 11 12 13 14 15\n"
                 "16 17 18 19 20 21 22\n"
                 "23 24 25 26 27 28* (1)\n"},
             // Begins on the last day of a week and has 31 days; today is shown beside it.
             Case{
                 "2026-03-01",
                 2,
                 "(23) (24) (25) (26) (27) (28)* 1\n"
                 "2 3 4 5 6 7 8\n"
                 "9 10 11 12 13 14 15\n"
                 "16 17 18 19 20 21 22\n"
                 "23 24 25 26 27 28 29\n"
                 "30 31 (1) (2) (3) (4) (5)\n"},
         }) {
        const Calendar calendar("Europe/Berlin", firstWeekday);
        const auto cells = TaskCalendarLayout::monthCells(
            noon(calendar, day), calendar, noon(calendar, "2026-02-28"));
        EXPECT_EQ(grid(cells, calendar), expected) << day;
    }
}

TEST(TaskCalendarLayout, EveryCellIsTheStartOfItsDayAcrossClockChanges) {
    struct Case {
        const char* zone;
        const char* day;
    };
    for (const auto& [zone, day] : {
             Case{"Europe/Berlin", "2026-03-29"},
             Case{"Europe/Berlin", "2026-10-25"},
             Case{"America/New_York", "2026-11-01"},
             Case{"Australia/Lord_Howe", "2026-10-04"},
             Case{"America/Sao_Paulo", "2018-11-04"},  // has no midnight
             Case{"America/Havana", "2026-11-01"},     // midnight comes twice
         }) {
        for (int firstWeekday = 1; firstWeekday <= 7; ++firstWeekday) {
            const Calendar calendar(zone, firstWeekday);
            const Instant date = noon(calendar, day);
            const auto month = TaskCalendarLayout::monthCells(date, calendar, date);
            const auto week = TaskCalendarLayout::weekCells(date, calendar, date);
            SCOPED_TRACE(std::string(zone) + " " + day);
            ASSERT_EQ(month.size() % 7, 0U);
            ASSERT_EQ(week.size(), 7U);
            EXPECT_EQ(calendar.weekday(month.front().date), firstWeekday);
            EXPECT_EQ(week.front().date, calendar.startOfWeek(date));
            for (const auto* const cells : {&month, &week}) {
                for (std::size_t i = 0; i < cells->size(); ++i) {
                    const Instant start = (*cells)[i].date;
                    EXPECT_EQ(start, calendar.startOfDay(start));
                    EXPECT_EQ(
                        calendar.daysBetween(cells->front().date, start), static_cast<int>(i));
                    EXPECT_EQ((*cells)[i].isToday, calendar.startOfDay(date) == start);
                }
            }
        }
    }
}

TEST(TaskCalendarLayout, WeeksCrossMonthsWithAllDaysDisplayed) {
    const Calendar calendar("UTC", 2);
    const Instant today = noon(calendar, "2026-03-01");
    EXPECT_EQ(
        grid(TaskCalendarLayout::weekCells(today, calendar, today), calendar),
        "23 24 25 26 27 28 1*\n");
    const Instant next = noon(calendar, "2026-03-02");
    EXPECT_EQ(
        grid(TaskCalendarLayout::weekCells(next, calendar, today), calendar), "2 3 4 5 6 7 8\n");
}

}  // namespace
}  // namespace tesserine
