#include "app/tasks/CalendarModel.h"

#include "app/state/WindowFixture.h"

#include <algorithm>

namespace tesserine::app {
namespace {

using Span = CalendarModel::Span;

/// Saturday, 14 March 2026; weeks begin on Monday.
class CalendarModelTest : public test::WindowFixture {
public:
    static Instant day(const std::string& date) { return *Instant::parseISO(date + "T12:00:00Z"); }
    std::string marked() const { return model.day().iso().substr(0, 10); }

    CalendarModel model{*environment};
};

TEST_F(CalendarModelTest, NamesTheSpanThatIsShown) {
    struct Case {
        Span span;
        const char* date;
        const char* title;
        std::size_t days;
    };
    for (const auto& [span, date, title, days] : {
             Case{Span::month, "2026-03-14", "March 2026", 42},
             Case{Span::week, "2026-03-14", "9 – 15 March 2026", 7},
             Case{Span::week, "2026-04-01", "30 March – 5 April 2026", 7},
             Case{Span::week, "2026-12-31", "28 December 2026 – 3 January 2027", 7},
         }) {
        model.show(span, day(date));
        EXPECT_EQ(model.title().toStdString(), title);
        EXPECT_EQ(model.days().size(), days);
        EXPECT_EQ(marked(), date) << "the beginning of the day";
        EXPECT_EQ(model.days()[model.dayIndex()].cell.date, model.day());
    }
}

TEST_F(CalendarModelTest, MovesByDaysAndSpansAndBack) {
    model.show(Span::month, day("2026-01-31"));
    model.moveBySpans(1);
    EXPECT_EQ(marked(), "2026-02-28") << "a shorter month";
    model.moveByDays(1);
    EXPECT_EQ(model.title(), "March 2026") << "the span follows";
    model.show(Span::week, model.day());
    model.moveBySpans(-9);
    EXPECT_EQ(marked(), "2025-12-28");
    model.showToday();
    EXPECT_EQ(marked(), "2026-03-14");
    EXPECT_EQ(model.span(), Span::week);
}

TEST_F(CalendarModelTest, ReadsSoManyTasksOfADayAndCountsTheRest) {
    for (int i = 0; i < 70; ++i) {
        environment->tasks().create(
            context(), {.title = std::to_string(i), .due = TaskDue{.date = day("2026-03-20")}});
    }
    CDTask& done = addTask("Done 2026-03-19 8am");
    environment->tasks().complete(context(), done, environment->calendar());
    addTask("Late 2026-03-12 !1");
    environment->tasks().create(context(), {.title = "Below", .parent = &addTask("Plan tomorrow")});
    context().save();

    model.show(Span::month, day("2026-03-20"));
    const auto at = [&](const char* date) -> const CalendarDay& {
        return *std::ranges::find_if(model.days(), [&](const CalendarDay& shown) {
            return shown.cell.date.iso().starts_with(date);
        });
    };
    EXPECT_EQ(at("2026-03-20").tasks.size(), CalendarModel::mostTasksInMonth);
    EXPECT_EQ(at("2026-03-20").taskCount, 70U);
    EXPECT_EQ(at("2026-03-15").taskCount, 1U) << "subtasks have no day of their own";
    const CalendarTask& completed = at("2026-03-19").tasks.front();
    EXPECT_TRUE(completed.isCompleted);
    EXPECT_FALSE(completed.isOverdue);
    EXPECT_EQ(completed.time, "08:00");
    EXPECT_TRUE(at("2026-03-12").tasks.front().isOverdue);
    EXPECT_EQ(at("2026-03-12").tasks.front().priority, TaskPriority::p1);

    // A screen reader is not told all seventy.
    const QString spoken = model.spokenDay();
    EXPECT_TRUE(spoken.startsWith("Friday 20 March, 70 tasks, 0, 1")) << spoken.toStdString();
    EXPECT_EQ(spoken.count(", "), 10);
}

}  // namespace
}  // namespace tesserine::app
