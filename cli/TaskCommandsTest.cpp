#include "cli/CommandFixture.h"

namespace tesserine::cli {
namespace {

/// It is 09:15 in UTC on Saturday, 14 March 2026.
class TaskCommandsTest : public CommandFixture {
protected:
    std::string addTask(const std::string& sentence) {
        return mustRun({"task", "add", sentence}).line();
    }
    /// The titles of a list, subtasks in parentheses.
    std::string titles(std::vector<std::string> view) {
        view.insert(view.begin(), {"task", "list", "--json"});
        return titlesOf(mustRun(view).json());
    }
    static std::string titlesOf(const boost::json::value& tasks) {
        std::string text;
        for (const auto& task : tasks.as_array()) {
            text += (text.empty() ? "" : ", ") + shown(task.at("title"));
            const std::string subtasks = titlesOf(task.at("subtasks"));
            if (!subtasks.empty()) text += " (" + subtasks + ")";
        }
        return text;
    }
    boost::json::value task(const std::string& name) {
        return mustRun({"task", "show", name, "--json"}).json();
    }
};

TEST_F(TaskCommandsTest, ASentenceBecomesATaskThatEveryViewShowsInItsPlace) {
    const std::string id = addTask("Send invoice tomorrow 9am #Work @office p1");
    const auto shownTask = task(id.substr(0, 8));
    for (const auto& [key, value] : std::vector<std::pair<const char*, const char*>>{
             {"id", id.c_str()},
             {"title", "Send invoice"},
             {"dueDate", "2026-03-15T09:00:00.000Z"},
             {"dueHasTime", "true"},
             {"priority", "1"},
             {"projectName", "Work"},
             {"labels", R"(["office"])"},
             {"recurrenceRule", "null"},
             {"completedAt", "null"},
             {"parent", "null"},
             {"linkedNote", "null"}}) {
        EXPECT_EQ(shown(shownTask.at(key)), value) << key;
    }
    addTask("Call Ada today");
    addTask("Old bill 3 january 2026");
    addTask("Read");
    mustRun({"task", "done", addTask("Nap")});

    EXPECT_EQ(titles({}), "Send invoice, Call Ada, Old bill, Read");
    EXPECT_EQ(titles({"inbox"}), "Call Ada, Old bill, Read");
    EXPECT_EQ(titles({"today"}), "Old bill, Call Ada");
    EXPECT_EQ(titles({"upcoming"}), "Send invoice");
    EXPECT_EQ(titles({"completed"}), "Nap");
    EXPECT_EQ(titles({"project", "wORK"}), "Send invoice");
    EXPECT_EQ(titles({"label", "OFFICE"}), "Send invoice");
    EXPECT_EQ(titles({"all", "--limit", "2"}), "Send invoice, Call Ada");
}

TEST_F(TaskCommandsTest, ATerminalIsShownWhatWasUnderstood) {
    isTerminal_ = true;
    const auto added = mustRun({"task", "add", "Water", "plants", "every", "3", "days", "@home"});
    EXPECT_EQ(
        added.output.substr(added.output.find('\n') + 1),
        "Water plants\n"
        "Due         2026-03-14\n"
        "Repeats     Every 3 days\n"
        "Project     Inbox\n"
        "Labels      home\n");
    EXPECT_EQ(
        mustRun({"task", "parse", "Pay 1,234.50 rent friday 5pm"}).output,
        "Title       Pay 1,234.50 rent\n"
        "Due         2026-03-20 17:00\n"
        "Token       “friday” date\n"
        "Token       “5pm” time\n");
    EXPECT_EQ(
        mustRun({"task", "parse", "--json", "Nap p2 #\"Old house\" daily"}).line(),
        R"({"title":"Nap","dueDate":null,"dueHasTime":false,"priority":2,)"
        R"("projectName":"Old house","labels":[],"recurrence":{"unit":"day","interval":1,)"
        R"("weekdays":[],"dayOfMonth":null,"monthOfYear":null},"recognisedTokens":[)"
        R"({"text":"#\"Old house\"","kind":"project"},{"text":"p2","kind":"priority"},)"
        R"({"text":"daily","kind":"recurrence"}]})");
}

TEST_F(TaskCommandsTest, ARepeatingTaskIsFoundByItsNameAfterItMovedOn) {
    addTask("Water plants daily 2026-03-01");
    EXPECT_EQ(
        mustRun({"task", "done", "Water plants"}).output,
        "Completed “Water plants”; it is due again on 2026-03-15.\n");
    mustRun({"task", "done", "Water plants"});
    EXPECT_EQ(titles({"completed"}), "Water plants, Water plants");
    EXPECT_EQ(shown(task("Water plants").at("dueDate")), "2026-03-16T00:00:00.000Z");
    EXPECT_EQ(run({"task", "reopen", "Water plants"}).status, ExitStatus::failed);  // two of them
}

TEST_F(TaskCommandsTest, EverythingOfATaskCanBeChangedAndTakenAway) {
    const std::string id = addTask("Plan");
    const auto value = [&](const char* key) { return shown(task(id).at(key)); };
    mustRun(
        {"task",
         "edit",
         id,
         "--title",
         "Trip",
         "--details",
         "d",
         "--due",
         "friday 9am",
         "--remind",
         "2026-03-20 08:00",
         "--priority",
         "p2",
         "--repeat",
         "every 2 weeks fri",
         "--project",
         "Fun",
         "--add-label",
         "travel",
         "--add-label",
         "Travel"});
    EXPECT_EQ(value("title") + value("details") + value("priority"), "Tripd2");
    EXPECT_EQ(value("dueDate"), "2026-03-20T09:00:00.000Z");
    EXPECT_EQ(value("reminderAt"), "2026-03-20T08:00:00.000Z");
    EXPECT_EQ(value("recurrenceRule"), "unit=week;interval=2;weekdays=6");
    EXPECT_EQ(value("projectName") + value("labels"), R"(Fun["travel"])");

    mustRun(
        {"task",
         "edit",
         id,
         "--due",
         "2026-04-01",
         "--remind",
         "none",
         "--repeat",
         "none",
         "--remove-label",
         "TRAVEL"});
    EXPECT_EQ(value("dueDate") + value("dueHasTime"), "2026-04-01T00:00:00.000Zfalse");
    EXPECT_EQ(value("reminderAt") + value("recurrenceRule") + value("labels"), "nullnull[]");
    mustRun({"task", "edit", id, "--due", "2500-01-01"});  // beyond what sentences understand
    EXPECT_EQ(value("dueDate"), "2500-01-01T00:00:00.000Z");
    mustRun({"task", "edit", id, "--due", "none"});
    EXPECT_EQ(value("dueDate"), "null");
}

TEST_F(TaskCommandsTest, TasksMoveBetweenProjectsParentsAndPlaces) {
    addTask("a");
    addTask("b");
    addTask("c #Work");
    mustRun({"task", "add-subtask", "a", "a1"});
    mustRun({"task", "add-subtask", "a", "a2"});
    EXPECT_EQ(titles({}), "a (a1, a2), b, c");

    mustRun({"task", "move", "a2", "--before", "a1"});
    mustRun({"task", "move", "b", "--before", "a"});
    EXPECT_EQ(titles({"inbox"}), "b, a (a2, a1)");
    mustRun({"task", "move", "b", "--parent", "a"});
    mustRun({"task", "move", "a", "work"});
    EXPECT_EQ(titles({"project", "Work"}), "a (a2, a1, b), c");
    mustRun({"task", "move", "a1", "--after", "c"});
    EXPECT_EQ(titles({"project", "Work"}), "a (a2, b), c, a1");
    mustRun({"task", "move", "b", "--parent", "none"});
    EXPECT_EQ(titles({"project", "Work"}), "a (a2), c, a1, b");

    const auto refused = run({"task", "move", "a", "--parent", "c"});
    EXPECT_EQ(refused.status, ExitStatus::failed);
    EXPECT_EQ(
        refused.error,
        "“a” cannot become a subtask: it has subtasks, or it is that task itself.\n");
    EXPECT_EQ(mustRun({"task", "delete", "a", "--json"}).line(), R"({"deleted":2})");
    EXPECT_EQ(titles({}), "c, a1, b");
}

TEST_F(TaskCommandsTest, ProjectsKeepTheirRulesAndTheirTasks) {
    addTask("Send invoice #Work");
    struct Case {
        std::vector<std::string> line;
        const char* sentence;
    };
    for (const auto& [line, sentence] : {
             Case{{"project", "add", "work"}, "A project called “work” already exists."},
             Case{{"project", "add", " "}, "A project needs a name."},
             Case{{"project", "delete", "inbox"}, "The Inbox cannot be renamed or deleted."},
             Case{{"project", "rename", "Inbox", "x"}, "The Inbox cannot be renamed or deleted."},
             Case{{"project", "delete", "Fun"}, "The project “Fun” could not be found."},
         }) {
        const auto refused = run(line);
        EXPECT_EQ(refused.status, ExitStatus::failed);
        EXPECT_EQ(refused.error, std::string(sentence) + "\n");
    }
    mustRun({"project", "rename", "Work", "WORK"});
    mustRun({"project", "delete", "work"});
    EXPECT_EQ(titles({"inbox"}), "Send invoice");
    const auto projects = mustRun({"project", "list", "--json"}).json();
    ASSERT_EQ(projects.as_array().size(), 1U);
    EXPECT_EQ(shown(projects.at(0).at("taskCount")), "1");
}

TEST_F(TaskCommandsTest, ATemplateMakesItsTaskAgainAndAgain) {
    mustRun(
        {"task-template",
         "add",
         "Trip",
         "--title",
         "Pack",
         "--due-offset",
         "2",
         "--due-time",
         "9:05",
         "--label",
         "travel",
         "--subtask",
         "Passport",
         "--subtask",
         "Keys"});
    EXPECT_EQ(
        shown(mustRun({"task-template", "show", "trip", "--json"}).json().at("summary")),
        "Due 2 days after it is created at 09:05 · travel · 2 subtasks");
    const std::string id = mustRun({"task-template", "use", "Trip"}).line();
    EXPECT_EQ(titles({}), "Pack (Passport, Keys)");
    EXPECT_EQ(shown(task(id).at("dueDate")), "2026-03-16T09:05:00.000Z");

    mustRun({"task-template", "edit", "Trip", "--due-offset", "none", "--subtask", "Bags"});
    EXPECT_EQ(
        mustRun({"task-template", "add", "--from", "Pack", "--json"}).json().at("name"),
        "Untitled Template");
    EXPECT_NE(
        mustRun({"task-template", "list"}).output.find("No due date · travel · 1 subtask\n"),
        std::string::npos);
    EXPECT_EQ(
        run({"task-template", "edit", "Trip", "--name", " "}).error, "A template needs a name.\n");
    mustRun({"task-template", "delete", "Trip"});
    EXPECT_EQ(run({"task-template", "use", "Trip"}).status, ExitStatus::failed);
}

TEST_F(TaskCommandsTest, TheCalendarShowsWholeWeeksWithTheirTasks) {
    mustRun({"task", "add", "Pay rent 3 february 2027"});
    const auto days = [&](std::vector<std::string> line) {
        line.insert(line.end(), {"--json"});
        return mustRun(line).json().as_array();
    };
    EXPECT_EQ(days({"calendar", "month", "2026-02", "--first-weekday", "1"}).size(), 28U);
    const auto mondayFirst = days({"calendar", "month", "2026-02", "--first-weekday", "2"});
    EXPECT_EQ(mondayFirst.size(), 35U);
    EXPECT_EQ(shown(mondayFirst.front().at("day")), "2026-01-26");
    EXPECT_EQ(shown(mondayFirst.front().at("isInDisplayedMonth")), "false");

    const auto week = days({"calendar", "week", "--first-weekday", "2"});
    EXPECT_EQ(week.size(), 7U);
    EXPECT_EQ(shown(week[5].at("isToday")), "true");
    EXPECT_EQ(titlesOf(days({"calendar", "month", "2027-02-10"})[2].at("tasks")), "Pay rent");
    EXPECT_EQ(run({"calendar", "month", "2026-13"}).status, ExitStatus::usage);
}

TEST_F(TaskCommandsTest, RemindersOfTasksAndNotesStandTogetherUpToTheLimit) {
    for (int i = 0; i < 70; ++i) {
        mustRun(
            {"task",
             "add",
             "t" + std::to_string(i),
             "--remind",
             "2026-03-15 10:" + std::to_string(10 + i % 50)});
    }
    addNote("Plan");
    mustRun({"note", "remind", "Plan", "2026-03-15 10:00"});
    const auto reminders = mustRun({"reminders", "--json"}).json().as_array();
    ASSERT_EQ(reminders.size(), 60U);
    EXPECT_EQ(shown(reminders[0].at("identifier")).substr(0, 5), "note-");
    EXPECT_EQ(shown(reminders[1].at("kind")), "task");
    EXPECT_EQ(shown(reminders[1].at("identifier")), shown(reminders[1].at("taskID")));
    EXPECT_EQ(mustRun({"reminders", "--limit", "100", "--json"}).json().as_array().size(), 71U);
}

TEST_F(TaskCommandsTest, BatchAddsAndCompletesTasksAndMayRepeatItself) {
    const std::string id = "00000000-0000-4000-8000-000000000001";
    const std::string add =
        R"({"op": "task.add", "id": ")" + id + R"(", "sentence": "Call @work"})";
    const std::string done = R"({"op": "task.done", "id": ")" + id + R"("})";
    EXPECT_EQ(
        mustRun(
            {"batch"},
            add + "\n" + add + "\n" + done + "\n" + done + "\n"
                + R"({"op": "task.add", "sentence": " "})" + "\n"
                + R"({"op": "task.done", "id": "nobody"})" + "\n"
                + R"({"op": "group", "ops": [{"op": "task.add", "sentence": "x"}, {"op": "no"}]})")
            .output,
        R"({"ok":true,"id":")" + id + "\"}\n" + R"({"ok":true,"id":")" + id + "\"}\n"
            + R"({"ok":true,"id":")" + id + "\"}\n" + R"({"ok":true,"id":")" + id + "\"}\n"
            + R"({"ok":false,"error":"A task needs a title."})" + "\n"
            + R"({"ok":false,"error":"The task “nobody” could not be found."})" + "\n"
            + R"({"ok":false,"error":"There is no operation “no”."})" + "\n");
    EXPECT_EQ(titles({"completed"}), "Call");
    EXPECT_EQ(titles({}), "");
}

TEST_F(TaskCommandsTest, AnOverviewBeginsWithWhatIsDue) {
    addTask("Late 1 march 2026");
    addTask("Soon tomorrow");
    EXPECT_EQ(titlesOf(mustRun({"overview", "--json"}).json().at("due")), "Late");
    EXPECT_NE(mustRun({"overview"}).output.find("0 notes, 2 open tasks."), std::string::npos);
}

TEST_F(TaskCommandsTest, WhatMakesNoSenseIsRefusedAndChangesNothing) {
    const std::string id = addTask("Plan");
    struct Case {
        std::vector<std::string> line;
        ExitStatus status;
    };
    for (const auto& [line, status] : {
             Case{{"task", "add", ""}, ExitStatus::usage},
             Case{{"task", "add", std::string(11'000, 'x')}, ExitStatus::failed},
             Case{{"task", "edit", id}, ExitStatus::usage},
             Case{{"task", "edit", id, "--title", " "}, ExitStatus::usage},
             Case{{"task", "edit", id, "--due", "soon"}, ExitStatus::usage},
             Case{{"task", "edit", id, "--due", "tomorrow p1"}, ExitStatus::usage},
             Case{{"task", "edit", id, "--due", "2026-02-30"}, ExitStatus::usage},
             Case{{"task", "edit", id, "--priority", "5"}, ExitStatus::usage},
             Case{{"task", "edit", id, "--repeat", "tomorrow"}, ExitStatus::usage},
             Case{{"task", "list", "project"}, ExitStatus::usage},
             Case{{"task", "list", "today", "x"}, ExitStatus::usage},
             Case{{"task", "list", "label", "nobody"}, ExitStatus::failed},
             Case{{"task", "show", "nobody"}, ExitStatus::failed},
             Case{{"task", "move", id}, ExitStatus::usage},
             Case{{"task", "move", id, "Nowhere"}, ExitStatus::failed},
             Case{{"task", "add-subtask", id, ""}, ExitStatus::usage},
         }) {
        EXPECT_EQ(run(line).status, status) << line[1] << " " << line.back().substr(0, 20);
    }
    EXPECT_EQ(titles({}), "Plan");
    EXPECT_EQ(mustRun({"project", "list", "--json"}).json().as_array().size(), 1U);
}

}  // namespace
}  // namespace tesserine::cli
