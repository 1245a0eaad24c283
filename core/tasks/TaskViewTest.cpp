#include "core/tasks/TaskFixture.h"

namespace tesserine {
namespace {

class TaskViewTest : public test::TaskFixture {};

TEST_F(TaskViewTest, DaysBeginAtMidnightInTheUsersZone) {
    addDue("last year", "2025-03-14T09:00");
    addDue("yesterday", "2026-03-13T23:59");
    addDue("today, untimed", "2026-03-14T00:00", false);
    addDue("last minute", "2026-03-14T23:59");
    addDue("first of tomorrow", "2026-03-15T00:00", false);
    addDue("tomorrow", "2026-03-15T08:00");
    add({.title = "whenever"});

    EXPECT_EQ(titles(TaskView::today()), "last year, yesterday, today, untimed, last minute");
    EXPECT_EQ(titles(TaskView::upcoming()), "first of tomorrow, tomorrow");

    // In UTC the day is an hour younger: what Berlin calls tomorrow's midnight is today at 23:00.
    calendar = Calendar("UTC");
    EXPECT_EQ(
        titles(TaskView::today()),
        "last year, yesterday, today, untimed, last minute, first of tomorrow");
    EXPECT_EQ(titles(TaskView::upcoming()), "tomorrow");
}

TEST_F(TaskViewTest, TheDayOfAClockChangeHasItsOwnLength) {
    clock.set(at("2026-03-29T12:00"));  // 23 hours long
    addDue("late", "2026-03-29T23:30");
    addDue("tomorrow", "2026-03-30T00:00", false);
    EXPECT_EQ(titles(TaskView::today()), "late");
    EXPECT_EQ(titles(TaskView::upcoming()), "tomorrow");
    EXPECT_EQ(titles(context.fetch<CDTask>(tasksDueOn(at("2026-03-29T00:00"), calendar))), "late");
}

TEST_F(TaskViewTest, WhatIsDueStandsByTimeThenUrgencyThenPlace) {
    addDue("second", "2026-03-14T12:00");
    CDTask& first = addDue("urgent", "2026-03-14T12:00");
    addDue("earlier", "2026-03-14T11:00");
    service.setPriority(first, TaskPriority::p1);
    addDue("third", "2026-03-14T12:00");
    EXPECT_EQ(titles(TaskView::today()), "earlier, urgent, second, third");
}

TEST_F(TaskViewTest, ListsShowOpenTasksWithoutAParentAndCompletedOnesOfBothLevels) {
    CDProject& work = service.projects().create(context, "Work");
    CDTask& plan = add({.title = "plan", .labels = {"Café"}, .project = &work});
    CDTask& step = add({.title = "step", .labels = {"café"}, .parent = &plan});
    add({.title = "milk", .labels = {"CAFÉ", "home"}});
    CDTask& done = add({.title = "done"});
    service.complete(context, done, calendar);
    clock.advance(std::chrono::seconds(1));
    service.complete(context, step, calendar);

    const auto expectViews = [&] {
        EXPECT_EQ(titles(TaskView::inbox()), "milk");
        EXPECT_EQ(titles(TaskView::project(*work.id)), "plan");
        EXPECT_EQ(titles(TaskView::label("CaFÉ")), "plan, milk");
        EXPECT_EQ(titles(TaskView::label("Cafe")), "");  // another letter, another label
        EXPECT_EQ(titles(TaskView::all()), "plan, milk");
        EXPECT_EQ(titles(TaskView::completed()), "step, done");
    };
    expectViews();
    context.save();
    expectViews();
    EXPECT_EQ(context.count<CDTag>(), 2U);  // the labels, however they were written
}

TEST_F(TaskViewTest, RemindersOfOpenTasksArePendingFromNowOn) {
    const Instant now = clock.now();
    const auto second = std::chrono::seconds(1);
    add({.title = "past", .reminderAt = now - second});
    add({.title = "later", .reminderAt = now + second});
    add({.title = "now", .reminderAt = now});
    CDTask& done = add({.title = "done", .reminderAt = now + second});
    service.complete(context, done, calendar);
    EXPECT_EQ(titles(context.fetch<CDTask>(tasksWithPendingReminder(now))), "now, later");
}

TEST_F(TaskViewTest, NothingBelowASubtaskIsHiddenAndRingsEnd) {
    CDTask& top = add({.title = "top"});
    CDTask& middle = add({.title = "middle", .parent = &top});
    CDTask& bottom = add({.title = "bottom"});
    bottom.parent = &middle;  // as two devices can do
    EXPECT_EQ(titles(subtasksInOrder(top)), "middle, bottom");

    CDTask& ring = add({.title = "ring"});
    CDTask& other = add({.title = "other", .parent = &ring});
    ring.parent = &other;
    ring.completedAt = clock.now();
    EXPECT_EQ(service.snapshots(context, TaskView::completed(), calendar, collator).size(), 1U);
}

}  // namespace
}  // namespace tesserine
