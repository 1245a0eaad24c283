#include "app/tasks/CalendarModel.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskCommands.h"

#include <algorithm>

namespace tesserine::app {
namespace {

using Span = CalendarModel::Span;

/// Sets the zone of the machine, as far as this process sees it.
class ZoneOfMachine {
public:
    explicit ZoneOfMachine(const char* zone) : before_(qgetenv("TZ")) { qputenv("TZ", zone); }
    ~ZoneOfMachine() { before_.isNull() ? qunsetenv("TZ") : qputenv("TZ", before_); }
    Q_DISABLE_COPY_MOVE(ZoneOfMachine)

private:
    QByteArray before_;
};

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
    addTask("Open 2026-03-19 9am");
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
    const CalendarTask& completed = at("2026-03-19").tasks.back();
    EXPECT_EQ(at("2026-03-19").tasks.front().title, "Open") << "it does not hide behind “more”";
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

/// The clock is put forward on 29 March 2026 and back on 25 October.
class ClockChangeTest : public test::WindowFixture {
public:
    ClockChangeTest() {
        AppSetting given = setting();
        given.zone = "Europe/Vienna";
        open(given);
    }
    Instant at(int month, int day, int hour, int minute = 0) const {
        return environment->calendar().instant(
            {.year = 2026, .month = month, .day = day, .hour = hour, .minute = minute});
    }
};

TEST_F(ClockChangeTest, EachTaskStandsOnItsOwnDay) {
    const std::vector<std::pair<int, int>> days = {
        {3, 28}, {3, 29}, {3, 30}, {10, 24}, {10, 25}, {10, 26}};
    for (const auto& [month, day] : days) {
        for (const auto& [hour, minute] : {std::pair(0, 0), std::pair(23, 59)}) {
            const std::string title = std::to_string(day) + "." + std::to_string(month);
            environment->tasks().create(
                context(),
                {.title = title,
                 .due = TaskDue{.date = at(month, day, hour, minute), .hasTime = true}});
        }
    }
    context().save();
    CalendarModel model(*environment);
    for (const auto& [month, day] : days) {
        for (const auto span : {Span::month, Span::week}) {
            model.show(span, at(month, day, 12));
            const CalendarDay& shown = model.days()[model.dayIndex()];
            EXPECT_EQ(shown.cell.date, at(month, day, 0));
            std::string tasks;
            for (const CalendarTask& task : shown.tasks) {
                tasks += task.time.toStdString() + " " + task.title.toStdString() + "; ";
            }
            const std::string title = std::to_string(day) + "." + std::to_string(month);
            EXPECT_EQ(tasks, "00:00 " + title + "; 23:59 " + title + "; ");
        }
    }
}

TEST_F(ClockChangeTest, ATaskThatIsPutOnAnotherDayKeepsItsTime) {
    const TaskCommands commands(*environment, nullptr);
    CDTask& task = addTask("Call 2026-03-27 9am");
    for (const int day : {28, 29, 30}) {
        commands.setDue({*task.id}, TaskDue{.date = at(3, day, 0)});
        EXPECT_EQ(task.dueDate, at(3, day, 9)) << day;
    }
    commands.setDue({*task.id}, TaskDue{.date = at(3, 30, 2, 30), .hasTime = true});
    commands.setDue({*task.id}, TaskDue{.date = at(3, 29, 0)});
    EXPECT_EQ(task.dueDate, at(3, 29, 3, 30)) << "half past two does not come that night";
}

TEST_F(ClockChangeTest, TheMarkedDayStaysWhenTheMachineGoesToAnotherZone) {
    for (const char* zone : {"America/Los_Angeles", "Pacific/Kiritimati", "Europe/Vienna"}) {
        SCOPED_TRACE(zone);
        const ZoneOfMachine vienna("Europe/Vienna");
        AppSetting given = setting();
        given.zone = "";
        open(given);
        CalendarModel model(*environment);
        model.show(Span::month, at(3, 20, 12));
        const ZoneOfMachine there(zone);
        environment->refreshCalendar();
        ASSERT_EQ(environment->calendar().zone(), zone);
        model.reload();
        EXPECT_EQ(model.day(), at(3, 20, 0));
    }
}

}  // namespace
}  // namespace tesserine::app
