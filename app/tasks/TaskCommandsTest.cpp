#include "app/tasks/TaskCommands.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskHistory.h"

#include <algorithm>

namespace tesserine::app {
namespace {

/// Saturday, 14 March 2026, nine in the morning.
class TaskCommandsTest : public test::WindowFixture {
public:
    TaskCommandsTest() {
        QObject::connect(
            &history, &TaskHistory::lastChanged, [this](const QString& words) { said = words; });
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
    commands.remove({*gone.id});
    EXPECT_EQ(said, "") << "that is not the last thing any more";
    history.undo(nullptr);
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

}  // namespace
}  // namespace tesserine::app
