#include "app/tasks/TaskCommands.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskHistory.h"
#include "core/tasks/TaskSnapshot.h"

#include <algorithm>

namespace tesserine::app {
namespace {

/// Saturday, 14 March 2026, nine in the morning.
class TaskCommandsTest : public test::WindowFixture {
public:
    TaskCommandsTest() {
        QObject::connect(
            &history, &TaskHistory::lastChanged, [this](const QString& words) { said = words; });
        QObject::connect(
            &history, &TaskHistory::takenBack, [this](const QString& words) { told = words; });
    }
    CDTask& addSubtask(CDTask& parent, const char* title) {
        CDTask& task = environment->tasks().create(context(), {.title = title, .parent = &parent});
        context().save();
        return task;
    }
    /// Every task with what completing changes: "Plan 2026-03-15 done".
    std::string state() {
        std::vector<std::string> lines;
        for (const CDTask* task : context().fetch<CDTask>()) {
            std::string line = task->title.valueOr("");
            if (task->dueDate) line += " " + task->dueDate->iso().substr(0, 10);
            if (task->completedAt) line += " done";
            lines.push_back(line);
        }
        std::ranges::sort(lines);
        std::string text;
        for (const std::string& line : lines) {
            text += text.empty() ? line : "; " + line;
        }
        return text;
    }

    TaskCommands commands{*environment, nullptr};
    TaskHistory& history{TaskHistory::of(*environment)};
    QString said;  // of what was done last
    QString told;  // of what was taken back
};

TEST_F(TaskCommandsTest, CompletingSeveralIsTakenBackAsAWhole) {
    const CDTask& plain = addTask("Plain");
    CDTask& weekly = addTask("Weekly every week 2026-03-10");
    CDTask& undated = addTask("Undated");
    CDTask& done = addTask("Long done");
    addSubtask(weekly, "Part");
    environment->tasks().complete(context(), done, environment->calendar());
    environment->tasks().setRecurrence(undated, RecurrenceRule{});  // without a date it just ends
    context().save();
    const std::string before = state();

    commands.complete({*plain.id, *weekly.id, Uuid(), *undated.id, *done.id});
    EXPECT_EQ(said, "Completed 3 tasks");
    EXPECT_EQ(
        state(),
        "Long done done; Part; Plain done; Undated done; Weekly 2026-03-10 done; Weekly 2026-03-17");
    history.undo(nullptr);
    EXPECT_EQ(state(), before);
    history.undo(nullptr);
    EXPECT_EQ(state(), before) << "there is nothing left to take back";
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(TaskCommandsTest, WhatWasDeletedMeanwhileStaysDeleted) {
    const CDTask& kept = addTask("Kept");
    const CDTask& gone = addTask("Gone");
    commands.complete({*kept.id, *gone.id});
    context().remove(*context().find<CDTask>(*gone.id));  // as from another program
    context().save();
    history.undo(nullptr);
    EXPECT_EQ(state(), "Kept");
    history.redo(nullptr);
    EXPECT_EQ(state(), "Kept done");
    said = "nothing";
    commands.complete({Uuid()});
    EXPECT_EQ(said, "nothing");
}

TEST_F(TaskCommandsTest, ALongTitleIsCutInTheSentence) {
    const CDTask& task = addTask(std::string(200, 'x'));
    commands.complete({*task.id});
    EXPECT_EQ(said, "Completed “" + QString(60, 'x') + "…”");
}

TEST_F(TaskCommandsTest, MovesCopiesAndDeletesWithWhatStandsBelow) {
    CDTask& parent = addTask("Parent #Work @a");
    const CDTask& first = addSubtask(parent, "First");
    const CDTask& second = addSubtask(parent, "Second");
    CDProject& garden = environment->projects().create(context(), "Garden");
    context().save();

    commands.move({*second.id}, *garden.id);
    EXPECT_EQ(second.parent.get(), nullptr) << "a subtask leaves its task";
    EXPECT_EQ(second.project.get(), &garden);
    history.undo(nullptr);
    EXPECT_EQ(second.parent.get(), &parent) << "and comes back to it";
    EXPECT_EQ(second.project->name, "Work");
    commands.move({*second.id}, *garden.id);
    commands.move({*parent.id, *first.id}, Uuid());
    EXPECT_EQ(parent.project->name, "Work") << "there is no such project";
    commands.move({*parent.id, *first.id}, *garden.id);
    EXPECT_EQ(first.project.get(), &garden) << "with its task";
    EXPECT_EQ(first.parent.get(), &parent) << "that it was chosen with";

    commands.duplicate({*parent.id});
    EXPECT_EQ(state(), "First; Parent; Parent copy; Second");
    commands.remove({*parent.id, *first.id, *second.id});
    EXPECT_EQ(state(), "Parent copy");
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(TaskCommandsTest, WhatIsDeletedComesBackWithAllThatItHeld) {
    CDTask& parent = addTask("Parent #Work @a @b 2026-03-20 3pm every week");
    CDTask& part = addSubtask(parent, "Part");
    addSubtask(parent, "Other part");
    const CDTask& other = addTask("Other");
    CDNote& note = addNote("Plan");
    parent.linkedNote = &note;
    parent.details = "with words";
    environment->tasks().setReminder(parent, *Instant::parseISO("2026-03-19T09:00:00Z"));
    environment->tasks().reopen(part);
    context().save();
    const Uuid id = *parent.id;
    const Uuid partID = *part.id;
    commands.setPriority({id}, TaskPriority::p2);
    commands.complete({partID, *other.id});
    const auto all = [&](const Uuid& task) {
        const auto* const found = context().find<CDTask>(task);
        if (found == nullptr) return std::string("gone");
        const auto held = TaskSnapshot::of(*found, environment->collator());
        std::string text = held.title + ", " + held.details + ", "
                           + found->project->name.valueOr("") + ", p"
                           + std::to_string(static_cast<int>(held.priority));
        if (held.dueDate) text += ", due " + held.dueDate->iso() + (held.dueHasTime ? "!" : "");
        if (held.reminderAt) text += ", remind " + held.reminderAt->iso();
        if (held.recurrenceRule) text += ", " + held.recurrenceRule->description();
        if (held.completedAt) text += ", done";
        if (held.linkedNoteID) text += ", note";
        if (held.parentID == id) text += ", below";
        for (const std::string& label : held.labels) {
            text += " @" + label;
        }
        return text + " " + std::to_string(held.subtasks.size()) + " " + held.createdAt.iso();
    };
    const std::string before = all(id);
    const std::string partBefore = all(partID);
    EXPECT_NE(before.find(", note @a @b 2"), std::string::npos) << before;

    commands.remove({partID, id});
    EXPECT_EQ(said, "Deleted 2 tasks");
    EXPECT_EQ(state(), "Other done");
    history.undo(nullptr);
    EXPECT_EQ(told, "2 tasks are back");
    EXPECT_EQ(all(id), before);
    EXPECT_EQ(all(partID), partBefore);
    history.redo(nullptr);
    EXPECT_EQ(state(), "Other done");
    history.undo(nullptr);
    EXPECT_EQ(all(id), before);
    history.undo(nullptr);
    EXPECT_FALSE(context().find<CDTask>(partID)->completedAt) << "what was done before it went";
    EXPECT_FALSE(other.completedAt);
    history.undo(nullptr);
    EXPECT_EQ(context().find<CDTask>(id)->priority, 4);
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(TaskCommandsTest, WhatATaskBelongedToMayBeGoneWhenItComesBack) {
    const CDTask& parent = addTask("Parent #Work @a");
    const Uuid part = *addSubtask(*context().find<CDTask>(*parent.id), "Part").id;
    commands.remove({part});
    commands.complete({*parent.id});
    context().remove(*context().find<CDTask>(*parent.id));  // as from another program
    context().remove(*environment->projects().find(context(), "Work"));
    context().save();
    history.undo(nullptr);
    const auto* const back = context().find<CDTask>(part);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->parent.get(), nullptr);
    EXPECT_EQ(back->project->isInbox, true);
}

TEST_F(TaskCommandsTest, NewTasksGoAgainUnlessTheyWereChanged) {
    const CDTask& a = addTask("A");
    const CDTask& b = addTask("B");
    const auto named = [this](const char* title) {
        return context().fetchFirst<CDTask>({.predicate = {"title == %@", std::string(title)}});
    };
    commands.duplicate({*a.id, *b.id});
    history.undo(nullptr);
    EXPECT_EQ(state(), "A; B");
    EXPECT_EQ(told, "Taken back: 2 tasks");
    history.redo(nullptr);
    EXPECT_EQ(state(), "A; A copy; B; B copy");

    commands.setPriority({*named("A copy")->id}, TaskPriority::p1);
    history.undo(nullptr);
    environment->tasks().addLabel(context(), *named("B copy"), "theirs");
    context().save();
    history.undo(nullptr);
    EXPECT_EQ(state(), "A; B; B copy") << "a change that was taken back is none";
    EXPECT_EQ(told, "“B copy” was changed since and stays as it is");

    commands.duplicate({*a.id});
    addSubtask(*named("A copy"), "Part");
    history.undo(nullptr);
    EXPECT_EQ(state(), "A; A copy; B; B copy; Part");
    EXPECT_EQ(told, "“A copy” was changed since and stays as it is");
}

}  // namespace
}  // namespace tesserine::app
