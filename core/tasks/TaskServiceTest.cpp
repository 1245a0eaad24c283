#include "core/tasks/TaskFixture.h"

#include <limits>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;

class TaskServiceTest : public test::TaskFixture {
protected:
    CDTask& addRepeating(const char* due, const RecurrenceRule& rule) {
        return add(
            {.title = "t", .due = TaskDue{.date = at(due), .hasTime = true}, .recurrence = rule});
    }
    /// Completes the task at its own due time and tells when it is due next.
    std::string dueAfterCompletion(CDTask& task) {
        clock.set(*task.dueDate);
        service.complete(context, task, calendar);
        return local(task.dueDate);
    }
};

TEST_F(TaskServiceTest, ANewTaskGoesToTheInboxBehindTheOthers) {
    add({.title = "first"});
    CDProject& work = service.projects().create(context, "Work");
    CDTask& plan = add({.title = "plan", .projectName = " WORK"});
    CDTask& step = add({.title = "step", .parent = &plan});
    CDTask& second = add({.title = "second step", .parent = &step});
    add({.title = "other", .projectName = "Elsewhere"});
    add({.title = "last"});

    EXPECT_EQ(plan.project, &work);
    EXPECT_EQ(step.project, &work);
    EXPECT_EQ(second.parent, &plan);  // two levels only
    EXPECT_EQ(titles(subtasksInOrder(plan)), "step, second step");
    EXPECT_EQ(titles(TaskView::inbox()), "first, last");
    EXPECT_EQ(titles(TaskView::all()), "first, plan, other, last");
    EXPECT_EQ(service.projects().all(context).size(), 3U);
}

TEST_F(TaskServiceTest, ATitleMayHaveTenThousandCharactersAndNoMore) {
    std::string title;
    for (std::size_t i = 0; i < TaskService::maximumTitleCharacters; ++i) {
        title += "é";
    }
    CDTask& task = add({.title = title});
    EXPECT_THROW(service.setTitle(task, title + "e"), TaskError);
    EXPECT_THROW(add({.title = title + "e", .projectName = "New"}), TaskError);
    EXPECT_EQ(task.title, title);
    EXPECT_EQ(service.projects().find(context, "New"), nullptr);
}

TEST_F(TaskServiceTest, ADailyTaskOfLastYearMovesPastNowAndLeavesOneCompletedCopy) {
    auto& note = context.insert<CDNote>();
    CDTask& task = add(
        {.title = "water",
         .details = "the plants",
         .due = TaskDue{.date = at("2025-03-14T09:00"), .hasTime = true},
         .reminderAt = at("2025-03-13T20:00"),
         .priority = TaskPriority::p2,
         .recurrence = RecurrenceRule{},
         .labels = {"home", "Garden"},
         .linkedNote = &note});
    CDTask& step =
        add({.title = "step", .due = TaskDue{.date = at("2025-03-12T00:00")}, .parent = &task});
    service.complete(context, step, calendar);
    const Instant created = *task.createdAt;
    clock.advance(std::chrono::seconds(60));
    const CDTask* copy = service.complete(context, task, calendar);
    context.save();

    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(local(task.dueDate), "2026-03-15T09:00");
    EXPECT_EQ(local(task.reminderAt), "2026-03-14T20:00");
    EXPECT_EQ(local(step.dueDate), "2026-03-13T00:00");
    EXPECT_FALSE(task.completedAt);
    EXPECT_FALSE(step.completedAt);

    const auto snapshot = TaskSnapshot::of(*copy, collator);
    EXPECT_EQ(snapshot.title + ", " + snapshot.details, "water, the plants");
    EXPECT_EQ(local(snapshot.dueDate), "2025-03-14T09:00");
    EXPECT_TRUE(snapshot.dueHasTime);
    EXPECT_EQ(snapshot.priority, TaskPriority::p2);
    EXPECT_EQ(snapshot.labels, (std::vector<std::string>{"Garden", "home"}));
    EXPECT_EQ(snapshot.linkedNoteID, *note.id);
    EXPECT_EQ(snapshot.createdAt, created);
    EXPECT_EQ(snapshot.completedAt, clock.now());
    EXPECT_FALSE(snapshot.recurrenceRule || snapshot.reminderAt || snapshot.parentID);
    EXPECT_TRUE(snapshot.subtasks.empty());
    EXPECT_EQ(titles(TaskView::completed()), "water");
}

/// What rules do is tested there; here, that they are asked in the user's zone, time and again.
TEST_F(TaskServiceTest, CompletingWalksByTheRuleInTheUsersZone) {
    calendar = Calendar("Australia/Lord_Howe");
    CDTask& rent = addRepeating("2026-03-31T09:00", {.unit = Unit::month, .dayOfMonth = 31});
    EXPECT_EQ(dueAfterCompletion(rent), "2026-04-30T09:00") << "across a change of the clocks";
    EXPECT_EQ(dueAfterCompletion(rent), "2026-05-31T09:00");
}

TEST_F(TaskServiceTest, WhatDoesNotGoOnIsSimplyCompleted) {
    CDTask& once = addDue("once", "2026-03-14T09:00");
    CDTask& undated = add({.title = "undated", .recurrence = RecurrenceRule{}});
    for (CDTask* task : {&once, &undated}) {
        EXPECT_EQ(service.complete(context, *task, calendar), nullptr);
        EXPECT_EQ(task->completedAt, clock.now());
    }
    // A second completion does not make it newer.
    clock.advance(std::chrono::seconds(60));
    service.complete(context, once, calendar);
    EXPECT_EQ(once.completedAt, clock.now() - std::chrono::seconds(60));
    service.reopen(once);
    EXPECT_EQ(titles(TaskView::today()), "once");
}

/// Clocks go forward on 29 March.
TEST_F(TaskServiceTest, AReminderMovesWithTheDueDateOfItsTask) {
    struct Case {
        const char* what;
        const char* from;
        bool hadTime;
        const char* reminder;
        const char* to;
        bool hasTime;
        const char* moved;
    };
    for (const auto& [what, from, hadTime, reminder, to, hasTime, moved] : {
             Case{
                 "earlier day",
                 "2026-03-30T14:00",
                 true,
                 "2026-03-30T13:00",
                 "2026-03-26T14:00",
                 true,
                 "2026-03-26T13:00"},
             Case{
                 "day and time",
                 "2026-03-27T14:00",
                 true,
                 "2026-03-27T13:00",
                 "2026-03-30T09:30",
                 true,
                 "2026-03-30T08:30"},
             Case{
                 "back over midnight",
                 "2026-03-30T09:00",
                 true,
                 "2026-03-30T01:00",
                 "2026-03-30T06:00",
                 true,
                 "2026-03-29T22:00"},
             Case{
                 "on over midnight",
                 "2026-03-27T09:00",
                 true,
                 "2026-03-26T23:00",
                 "2026-03-28T12:00",
                 true,
                 "2026-03-28T02:00"},
             Case{
                 "into the skipped hour",
                 "2026-03-28T14:00",
                 true,
                 "2026-03-28T13:30",
                 "2026-03-29T03:00",
                 true,
                 "2026-03-29T03:30"},
             Case{
                 "days without times",
                 "2026-03-27T00:00",
                 false,
                 "2026-03-26T20:00",
                 "2026-03-30T00:00",
                 false,
                 "2026-03-29T20:00"},
             Case{
                 "a time for the day",
                 "2026-03-27T00:00",
                 false,
                 "2026-03-27T08:00",
                 "2026-03-30T15:00",
                 true,
                 "2026-03-30T08:00"},
             Case{
                 "the same again",
                 "2026-10-25T09:00",
                 true,
                 "2026-10-25T02:30",
                 "2026-10-25T09:00",
                 true,
                 "2026-10-25T02:30"},
         }) {
        SCOPED_TRACE(what);
        CDTask& task = addDue("t", from, hadTime);
        service.setReminder(task, at(reminder));
        service.setDue(task, TaskDue{.date = at(to), .hasTime = hasTime}, calendar);
        EXPECT_EQ(local(task.dueDate), to);
        EXPECT_EQ(local(task.reminderAt), moved);
    }

    CDTask& task = addDue("t", "2026-03-30T14:00");
    service.setReminder(task, at("2026-03-30T13:00"));
    service.setDue(task, std::nullopt, calendar);
    EXPECT_EQ(local(task.reminderAt), "2026-03-30T13:00") << "it is not due any more";
    service.setDue(task, TaskDue{.date = at("2026-04-10T09:00"), .hasTime = true}, calendar);
    EXPECT_EQ(local(task.reminderAt), "2026-03-30T13:00") << "it had no date";
}

TEST_F(TaskServiceTest, ADuplicateStandsBesideTheTaskWithoutItsLabelsAndSubtasks) {
    CDTask& task = add(
        {.title = " Plan ",
         .details = "d",
         .due = TaskDue{.date = at("2026-03-20T09:00"), .hasTime = true},
         .reminderAt = at("2026-03-20T08:00"),
         .priority = TaskPriority::p1,
         .recurrence = RecurrenceRule{.unit = Unit::week},
         .labels = {"home"},
         .projectName = "Work"});
    CDTask& step = add({.title = " ", .parent = &task});
    service.complete(context, task, calendar);
    const CDTask& copy = service.duplicate(context, task);

    auto expected = TaskSnapshot::of(task, collator);
    const auto snapshot = TaskSnapshot::of(copy, collator);
    EXPECT_EQ(snapshot.title, "Plan copy");
    EXPECT_EQ(snapshot.details, expected.details);
    EXPECT_EQ(snapshot.projectID, expected.projectID);
    EXPECT_EQ(snapshot.dueDate, expected.dueDate);
    EXPECT_EQ(snapshot.dueHasTime, expected.dueHasTime);
    EXPECT_EQ(snapshot.reminderAt, expected.reminderAt);
    EXPECT_EQ(snapshot.priority, expected.priority);
    EXPECT_EQ(snapshot.recurrenceRule, expected.recurrenceRule);
    EXPECT_NE(snapshot.id, expected.id);
    EXPECT_GT(snapshot.sortIndex, expected.sortIndex);
    EXPECT_TRUE(snapshot.labels.empty() && snapshot.subtasks.empty());

    service.duplicate(context, step);
    EXPECT_EQ(titles(subtasksInOrder(task)), " , Copy");
}

TEST_F(TaskServiceTest, ATaskFromANoteIsLinkedToItAndNamesIt) {
    auto& note = context.insert<CDNote>();
    note.plainText = "\n  First line\nsecond";
    const CDTask& task = service.createFromNote(context, note);
    EXPECT_EQ(task.title, "First line");
    EXPECT_EQ(task.details, "From note: First line");
    EXPECT_EQ(task.linkedNote, &note);
    EXPECT_EQ(task.project->isInbox, true);
    EXPECT_EQ(service.createFromNote(context, note, "Call").title, "Call");
}

TEST_F(TaskServiceTest, MovingATaskKeepsTheTreeAtTwoLevelsAndInOneProject) {
    CDProject& work = service.projects().create(context, "Work");
    CDTask& plan = add({.title = "plan"});
    CDTask& step = add({.title = "step", .parent = &plan});
    CDTask& other = add({.title = "other", .project = &work});

    EXPECT_FALSE(service.setParent(context, plan, &plan));
    EXPECT_FALSE(service.setParent(context, plan, &step));   // stands for plan itself
    EXPECT_FALSE(service.setParent(context, plan, &other));  // it has subtasks
    EXPECT_TRUE(service.setParent(context, other, &step));
    EXPECT_EQ(other.project->isInbox, true);
    EXPECT_EQ(titles(subtasksInOrder(plan)), "step, other");

    service.moveToProject(context, plan, work);
    EXPECT_EQ(step.project, &work);
    service.moveToProject(context, step, service.projects().inbox(context));
    EXPECT_EQ(step.parent, nullptr);
    EXPECT_EQ(titles(TaskView::inbox()), "step");
    EXPECT_EQ(titles(subtasksInOrder(plan)), "other");

    service.remove(context, plan);
    EXPECT_EQ(titles(context.fetch<CDTask>()), "step");
}

TEST_F(TaskServiceTest, ANewOrderWritesOnlyWhatChangesItsPlace) {
    CDTask& a = add({.title = "a"});
    CDTask& b = add({.title = "b"});
    CDTask& c = add({.title = "c"});
    CDTask& d = add({.title = "d"});
    a.sortIndex = 5;
    b.sortIndex = 5;
    c.sortIndex = 5;
    d.sortIndex = 9;
    context.save();

    service.reorder({&c, &a, &b, &d});
    EXPECT_EQ(titles(TaskView::all()), "c, a, b, d");
    EXPECT_FALSE(c.isChanged());
    EXPECT_FALSE(d.isChanged());
    service.reorder({&d, &c});
    EXPECT_EQ(titles(TaskView::all()), "d, a, b, c");

    c.sortIndex = std::numeric_limits<std::int64_t>::max();  // as another device may send it
    clock.advance(std::chrono::seconds(1));
    add({.title = "e"});
    EXPECT_EQ(titles(TaskView::all()), "d, a, b, c, e");
}

}  // namespace
}  // namespace tesserine
