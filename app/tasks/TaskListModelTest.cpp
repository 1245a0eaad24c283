#include "app/tasks/TaskListModel.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskCommands.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QMimeData>

namespace tesserine::app {
namespace {

/// Saturday, 14 March 2026, nine in the morning. Every step of the model is watched by a tester.
class TaskListModelTest : public test::WindowFixture {
public:
    /// The lines as a reader would tell them: "[Overdue]", "Plan", "  Subtask", "✓ Done".
    std::string lines() const {
        std::string text;
        for (int row = 0; row < model.rowCount(); ++row) {
            const TaskRow& line = model.line(row);
            text += text.empty() ? "" : " | ";
            text += line.isTask()
                        ? (line.isSubtask ? "  " : "") + std::string(line.isCompleted ? "✓ " : "")
                              + line.title.toStdString()
                        : "[" + line.heading.toStdString() + "]";
        }
        return text;
    }
    CDTask& addSubtask(CDTask& parent, const char* title) {
        CDTask& task = environment->tasks().create(context(), {.title = title, .parent = &parent});
        context().save();
        return task;
    }

    TaskListModel model{*environment};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    TaskCommands commands{*environment, nullptr};
};

TEST_F(TaskListModelTest, GroupsTasksAsTheViewAsks) {
    addTask("Late 2026-03-12");
    addTask("This morning 2026-03-14 8am");
    addTask("Film tonight");
    addTask("Soon tomorrow p3");
    addTask("Soon and urgent tomorrow p1");
    addTask("Next year 2027-01-02");
    addTask("Some day");
    context().save();

    model.setView(TaskView::today());
    EXPECT_EQ(lines(), "[Overdue] | Late | [Today, Saturday 14 March] | This morning | Film");
    model.setView(TaskView::upcoming());
    EXPECT_EQ(
        lines(),
        "[Tomorrow, Sunday 15 March] | Soon and urgent | Soon | [Saturday 2 January 2027] | Next "
        "year");
    model.setView(TaskView::all());
    EXPECT_EQ(
        lines(), "Late | This morning | Film | Soon | Soon and urgent | Next year | Some day");
    const CDTask& late = *context().fetchFirst<CDTask>({.predicate = {"title == %@", "Late"}});
    commands.complete({*late.id});
    model.setView(TaskView::completed());
    EXPECT_EQ(lines(), "[Today, Saturday 14 March] | ✓ Late");
}

TEST_F(TaskListModelTest, TheNextDayTheListIsAnother) {
    addTask("Now today");
    addTask("Then tomorrow");
    model.setView(TaskView::today());
    clock.advance(std::chrono::hours(24));
    environment->refreshCalendar();
    EXPECT_EQ(lines(), "[Overdue] | Now | [Today, Sunday 15 March] | Then");
}

TEST_F(TaskListModelTest, ChangesLeaveSelectionWhereItIs) {
    for (const char* title : {"a today p3", "b today p2", "c today p1", "d today p4"}) {
        addTask(title);
    }
    model.setView(TaskView::today());
    ASSERT_EQ(lines(), "[Today, Saturday 14 March] | c | b | a | d");
    const Uuid a = model.line(3).id;
    const Uuid b = model.line(2).id;
    QItemSelectionModel selection(&model);
    selection.select(model.indexOf(a), QItemSelectionModel::Select);
    selection.select(model.indexOf(b), QItemSelectionModel::Select);
    const QPersistentModelIndex current(model.indexOf(b));

    const auto selected = [&] {
        QStringList titles;
        for (const QModelIndex& index : selection.selectedIndexes()) {
            titles += model.line(index).title;
        }
        titles.sort();
        return titles.join(' ').toStdString();
    };
    commands.setPriority({a}, TaskPriority::p1);
    EXPECT_EQ(lines(), "[Today, Saturday 14 March] | a | c | b | d");
    EXPECT_EQ(selected(), "a b");
    addTask("Late yesterday 2026-03-13");
    addTask("e today p1");
    EXPECT_EQ(
        lines(), "[Overdue] | Late yesterday | [Today, Saturday 14 March] | a | c | e | b | d");
    EXPECT_EQ(selected(), "a b");
    commands.remove({a});
    EXPECT_EQ(selected(), "b");
    EXPECT_EQ(model.line(current).title, "b");
}

TEST_F(TaskListModelTest, ACompletedLineStaysUntilItsTickIsDrawn) {
    addTask("a");
    CDTask& b = addTask("b");
    addTask("c");
    model.setView(TaskView::inbox());
    model.hold(*b.id);
    const Completion completion = commands.complete({*b.id});
    EXPECT_EQ(completion.sentence(), "Completed “b”");
    EXPECT_EQ(lines(), "a | ✓ b | c");
    addTask("d");
    EXPECT_EQ(lines(), "a | ✓ b | c | d");
    model.release(*b.id);
    EXPECT_EQ(lines(), "a | c | d");
    commands.undo(completion);
    EXPECT_EQ(lines(), "a | b | c | d");
}

TEST_F(TaskListModelTest, UndoBringsARepeatingTaskBackWithItsSubtasks) {
    CDTask& task = addTask("Water plants every day 2026-03-14 8am");
    CDTask& subtask = addSubtask(task, "Fill the can");
    commands.complete({*subtask.id});
    environment->tasks().setReminder(task, task.dueDate.get());
    context().save();
    const auto state = [&] {
        std::string text;
        for (const CDTask* each : context().fetch<CDTask>({.sort = {{"title"}, {"dueDate"}}})) {
            text += each->title.valueOr("") + " " + (each->dueDate ? each->dueDate->iso() : "-")
                    + " " + (each->reminderAt ? each->reminderAt->iso() : "-")
                    + (each->completedAt ? " done\n" : "\n");
        }
        return text;
    };
    const std::string before = state();
    const Completion completion = commands.complete({*task.id});
    EXPECT_EQ(
        state(),
        "Fill the can - -\n"
        "Water plants 2026-03-14T08:00:00.000Z - done\n"
        "Water plants 2026-03-15T08:00:00.000Z 2026-03-15T08:00:00.000Z\n");
    commands.undo(completion);
    EXPECT_EQ(state(), before);
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(TaskListModelTest, SubtasksStandBelowATaskThatIsExpanded) {
    CDTask& plan = addTask("Plan");
    addTask("Other");
    addSubtask(plan, "first");
    commands.complete({*addSubtask(plan, "second").id});
    model.setView(TaskView::all());
    EXPECT_EQ(lines(), "Plan | Other");
    EXPECT_EQ(model.line(0).subtaskCount, 2);
    EXPECT_EQ(model.line(0).doneSubtaskCount, 1);
    model.setExpanded(*plan.id, true);
    EXPECT_EQ(lines(), "Plan |   first |   ✓ second | Other");
    model.setExpanded(*plan.id, false);
    EXPECT_EQ(lines(), "Plan | Other");
}

TEST_F(TaskListModelTest, ReadsFurtherTasksWhenAskedFor) {
    for (int i = 0; i < 250; ++i) {
        environment->tasks().create(context(), {.title = std::to_string(i)});
    }
    context().save();
    TaskListModel list(*environment);  // the tester would ask for more by itself
    list.setView(TaskView::inbox());
    EXPECT_EQ(list.rowCount(), 100);
    EXPECT_FALSE(list.taskCount()) << "nobody knows yet";
    while (list.canFetchMore({})) {
        list.fetchMore({});
    }
    EXPECT_EQ(list.rowCount(), 250);
    EXPECT_EQ(list.line(249).title, "249");
    EXPECT_EQ(list.taskCount(), 250U);
    commands.remove({list.line(120).id, list.line(7).id});
    EXPECT_EQ(list.rowCount(), 248) << "what was read stays read";
}

/// Most lines are taken over from before; what they show must not grow old.
TEST_F(TaskListModelTest, EveryChangeShowsInALongList) {
    std::vector<CDTask*> tasks;
    for (int i = 0; i < 150; ++i) {
        tasks.push_back(&addTask(("Task " + std::to_string(i)).c_str()));
    }
    CDTask& labelled = addTask("Labelled @home #Garden");
    TaskListModel list(*environment);  // the tester would ask for more by itself
    list.setView(TaskView::all());
    while (list.canFetchMore({})) {
        list.fetchMore({});
    }
    const auto lineOf = [&](const CDTask& task) { return list.line(list.indexOf(*task.id)); };
    ASSERT_EQ(list.rowCount(), 151);

    tasks[120]->title = "Renamed";
    context().save();
    EXPECT_EQ(lineOf(*tasks[120]).title, "Renamed");

    labelled.labels.all().front()->name = "house";
    labelled.project->name = "Yard";
    context().save();
    EXPECT_EQ(lineOf(labelled).labels, QStringList{"house"});
    EXPECT_EQ(lineOf(labelled).project, "Yard");

    CDTask& subtask = addSubtask(*tasks[5], "first");
    EXPECT_EQ(lineOf(*tasks[5]).subtaskCount, 1);
    subtask.parent = tasks[6];
    context().save();
    EXPECT_EQ(lineOf(*tasks[5]).subtaskCount, 0) << "of the former parent";
    EXPECT_EQ(lineOf(*tasks[6]).subtaskCount, 1);
    commands.complete({*subtask.id});
    EXPECT_EQ(lineOf(*tasks[6]).doneSubtaskCount, 1);
    context().remove(subtask);
    context().save();
    EXPECT_EQ(lineOf(*tasks[6]).subtaskCount, 0);

    // In its new place, and only there.
    tasks[140]->sortIndex = -1;
    context().save();
    EXPECT_EQ(list.line(0).id, *tasks[140]->id);
    EXPECT_EQ(list.rowCount(), 151);
}

TEST_F(TaskListModelTest, ADragCarriesTheTasksInTheirOrder) {
    addTask("a");
    addTask("b");
    model.setView(TaskView::all());
    const std::unique_ptr<QMimeData> data(model.mimeData({model.index(1), model.index(0)}));
    EXPECT_EQ(draggedTasks(*data), (std::vector{model.line(0).id, model.line(1).id}));
    EXPECT_EQ(data->text(), "a\nb");
}

TEST_F(TaskListModelTest, ADayThatIsSetKeepsTheTimeOfDay) {
    CDTask& timed = addTask("Timed tomorrow 9am");
    CDTask& dated = addTask("Dated tomorrow");
    const auto day = TaskDue{.date = *Instant::parseISO("2026-04-01T00:00:00Z")};
    commands.setDue({*timed.id, *dated.id}, day);
    EXPECT_EQ(timed.dueDate->iso(), "2026-04-01T09:00:00.000Z");
    EXPECT_TRUE(timed.dueHasTime);
    EXPECT_EQ(dated.dueDate->iso(), "2026-04-01T00:00:00.000Z");
    commands.setDue({*timed.id}, {});
    EXPECT_FALSE(timed.dueDate);
    EXPECT_FALSE(timed.dueHasTime);
}

}  // namespace
}  // namespace tesserine::app
