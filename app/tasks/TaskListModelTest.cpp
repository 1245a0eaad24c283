#include "app/tasks/TaskListModel.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskHistory.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QMimeData>

#include <algorithm>
#include <random>

namespace tesserine::app {
namespace {

/// Saturday, 14 March 2026, nine in the morning. Every step of the model is watched by a tester.
class TaskListModelTest : public test::WindowFixture {
public:
    /// The lines as a reader would tell them: "[Overdue]", "Plan", "  Subtask", "✓ Done".
    std::string lines() const {
        std::string text;
        for (int row = 0; row < model.rowCount(); ++row) {
            const TaskRow line = model.line(row);
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
    commands.complete({*b.id});
    EXPECT_EQ(lines(), "a | ✓ b | c");
    addTask("d");
    EXPECT_EQ(lines(), "a | ✓ b | c | d");
    model.release(*b.id);
    EXPECT_EQ(lines(), "a | c | d");
    TaskHistory::of(*environment).undo(nullptr);
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
    commands.complete({*task.id});
    EXPECT_EQ(
        state(),
        "Fill the can - -\n"
        "Water plants 2026-03-14T08:00:00.000Z - done\n"
        "Water plants 2026-03-15T08:00:00.000Z 2026-03-15T08:00:00.000Z\n");
    TaskHistory::of(*environment).undo(nullptr);
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

TEST_F(TaskListModelTest, WhatIsSavedWhileLinesGoIsShownAfterwards) {
    CDTask& plan = addTask("Plan");
    CDTask& first = addSubtask(plan, "first");
    addSubtask(plan, "second");
    addTask("Other");
    model.setView(TaskView::all());
    model.setExpanded(*plan.id, true);
    bool isSaved = false;
    // As a page does that showed the subtask and keeps what was typed into it.
    QObject::connect(&model, &TaskListModel::rowsAboutToBeRemoved, &model, [&] {
        if (std::exchange(isSaved, true)) return;
        first.title = "typed";
        addTask("New");
        context().save();
    });
    model.setExpanded(*plan.id, false);
    EXPECT_EQ(lines(), "Plan | Other | New");
    model.setExpanded(*plan.id, true);
    EXPECT_EQ(lines(), "Plan |   typed |   second | Other | New");
}

TEST_F(TaskListModelTest, TheRestOfALongListFollowsItsBeginning) {
    for (int i = 0; i < 250; ++i) {
        environment->tasks().create(context(), {.title = std::to_string(i)});
    }
    context().save();
    model.setView(TaskView::inbox());
    EXPECT_EQ(model.rowCount(), 100);
    EXPECT_FALSE(model.taskCount()) << "nobody knows yet";
    const QPersistentModelIndex seventh(model.index(7));
    EXPECT_TRUE(waitUntil([&] { return model.taskCount() == 250U; }));
    EXPECT_EQ(model.rowCount(), 250);
    EXPECT_EQ(model.line(249).title, "249");
    EXPECT_EQ(model.line(seventh).title, "7");
    commands.remove({model.at(120).id, model.at(7).id});
    EXPECT_EQ(model.rowCount(), 248);
}

TEST_F(TaskListModelTest, AChangeOfVeryManyTasksIsReadBesideTheWindow) {
    std::vector<Uuid> tasks;
    for (int i = 0; i < 150; ++i) {
        tasks.push_back(*addTask("Task " + std::to_string(i) + " tomorrow").id);
    }
    model.setView(TaskView::upcoming());
    ASSERT_TRUE(waitUntil([&] { return model.taskCount() == 150U; }));
    bool isAnnounced = false;
    QObject::connect(&model, &TaskListModel::aboutToBeReadAnew, &model, [&] {
        isAnnounced = true;  // selections are remembered now
    });
    commands.setDue(tasks, TaskDue{.date = *Instant::parseISO("2026-04-01T00:00:00Z")});
    EXPECT_FALSE(model.taskCount());
    EXPECT_TRUE(waitUntil([&] { return model.taskCount() == 150U; }));
    EXPECT_TRUE(isAnnounced);
    EXPECT_EQ(model.line(0).heading, "Wednesday 1 April");
    EXPECT_EQ(model.rowCount(), 151);
}

/// Every way from one order to another must end where reading anew would.
TEST_F(TaskListModelTest, SingleChangesLeadWhereReadingAnewWould) {
    const std::vector<TaskView> views{
        TaskView::today(), TaskView::upcoming(), TaskView::completed(), TaskView::all()};
    std::minstd_rand dice(5);
    const auto below = [&](std::size_t end) { return static_cast<std::size_t>(dice()) % end; };
    std::vector<CDTask*> tasks;
    for (int i = 0; i < 12; ++i) {
        tasks.push_back(&addTask("Task " + std::to_string(i)));
    }
    addSubtask(*tasks[0], "first");
    addSubtask(*tasks[0], "second");
    model.setExpanded(*tasks[0]->id, true);
    const Instant noon = *Instant::parseISO("2026-03-13T12:00:00Z");
    for (int turn = 0; turn < 200; ++turn) {
        const TaskView& view = views[static_cast<std::size_t>(turn) / 50];
        if (turn % 50 == 0) model.setView(view);
        for (std::size_t change = below(3); change < 3; ++change) {
            CDTask& task = *tasks[below(tasks.size())];
            const Instant day = noon + std::chrono::hours(24 * below(5));
            task.dueDate = below(5) == 0 ? std::nullopt : std::optional(day);
            task.completedAt = below(3) == 0 ? std::optional(day) : std::nullopt;
            task.priority = static_cast<std::int16_t>(1 + below(4));
            task.sortIndex = static_cast<std::int64_t>(below(4));
        }
        context().save();
        const std::string shown = lines();
        model.setView(view);
        ASSERT_EQ(shown, lines()) << "after turn " << turn;
    }
}

/// A list asks every line for its height without reading it.
TEST_F(TaskListModelTest, KnowsWhichLinesShowSomethingBelowTheirTitles) {
    addTask("Plain");
    addTask("Due tomorrow");
    addTask("Timed tomorrow 9am");
    addTask("Late 2026-03-12");
    addTask("Repeats every day");
    addTask("Labelled @home");
    addTask("Of a project #Garden");
    CDTask& reminded = addTask("Reminded");
    environment->tasks().setReminder(reminded, clock.now());
    CDNote& note = addNote("Note");
    environment->tasks().createFromNote(context(), note);
    CDTask& parent = addTask("Parent");
    CDTask& subtask = addSubtask(parent, "Subtask #Garden");
    environment->tasks().setPriority(subtask, TaskPriority::p1);
    context().save();
    model.setExpanded(*parent.id, true);
    const CDProject& garden =
        *context().fetchFirst<CDProject>({.predicate = {"name == %@", "Garden"}});
    for (const TaskView& view :
         {TaskView::today(),
          TaskView::upcoming(),
          TaskView::all(),
          TaskView::inbox(),
          TaskView::project(*garden.id),
          TaskView::label("home")}) {
        model.setView(view);
        const TaskListing listing(view, clock.now(), environment->calendar());
        const auto all = listing.all(context());
        ASSERT_GT(model.rowCount(), 0);
        for (int row = 0; row < model.rowCount(); ++row) {
            const TaskRow line = model.line(row);
            EXPECT_EQ(model.at(row).isTall, line.isTask() && line.hasPieces())
                << line.title.toStdString();
            const auto entry = std::ranges::find(all, line.id, &TaskEntry::id);
            EXPECT_TRUE(entry == all.end() || *entry == model.at(row).place);
        }
    }
}

TEST_F(TaskListModelTest, ADropChangesThePlacesBetweenOnly) {
    std::vector<CDTask*> tasks;
    for (const char* title : {"a", "b", "c", "d", "e", "f"}) {
        tasks.push_back(&addTask(title));
        clock.advance(std::chrono::seconds(1));
    }
    model.setView(TaskView::all());
    const auto id = [&](std::size_t i) { return *tasks[i]->id; };
    const auto drop = [&](const std::vector<Uuid>& dragged, const std::optional<Uuid>& before) {
        const auto order = model.orderWith(dragged, before);
        commands.reorder(order);
        return order.size();
    };
    EXPECT_EQ(drop({id(1)}, id(4)), 3U);
    EXPECT_EQ(lines(), "a | c | d | b | e | f");
    EXPECT_EQ(drop({id(5), id(0)}, id(3)), 6U);
    EXPECT_EQ(lines(), "c | a | f | d | b | e");
    EXPECT_EQ(drop({id(2)}, std::nullopt), 6U);
    EXPECT_EQ(lines(), "a | f | d | b | e | c");
    // Those that share a place stand by age until one is moved among them.
    for (CDTask* task : tasks) {
        task->sortIndex = 7;
    }
    context().save();
    EXPECT_EQ(lines(), "a | b | c | d | e | f");
    EXPECT_EQ(drop({id(4)}, id(2)), 6U);
    EXPECT_EQ(lines(), "a | b | e | c | d | f");
}

TEST_F(TaskListModelTest, EveryChangeShowsInALongList) {
    std::vector<CDTask*> tasks;
    for (int i = 0; i < 150; ++i) {
        tasks.push_back(&addTask(("Task " + std::to_string(i)).c_str()));
    }
    CDTask& labelled = addTask("Labelled @home #Garden");
    model.setView(TaskView::all());
    ASSERT_TRUE(waitUntil([&] { return model.taskCount() == 151U; }));
    const auto lineOf = [&](const CDTask& task) { return model.line(model.indexOf(*task.id)); };

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
    EXPECT_EQ(model.at(0).id, *tasks[140]->id);
    EXPECT_EQ(model.rowCount(), 151);
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
