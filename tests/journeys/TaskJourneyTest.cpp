#include "base/JSON.h"
#include "tests/journeys/ProgramRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace tesserine::test {
namespace {

/// The real program on one library, at a time and in a zone that a test chooses.
class TaskJourney : public ::testing::Test {
protected:
    Outcome at(const std::string& now, const std::string& zone, std::vector<std::string> words) {
        words.insert(words.end(), {"--now", now, "--time-zone", zone, "--json"});
        Outcome outcome = program_.run(words);
        EXPECT_EQ(outcome.status, 0) << words[1] << ": " << outcome.error;
        return outcome;
    }
    static std::string text(const std::string& json, const char* key) {
        const auto object = tesserine::json::parse(json);
        const auto& value = object.at(key);
        return value.is_string() ? std::string(value.as_string()) : tesserine::json::write(value);
    }
    boost::json::array list(std::vector<std::string> words) {
        words.insert(words.end(), "--json");
        const Outcome outcome = program_.run(words);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return tesserine::json::parse(outcome.output).as_array();
    }

    ProgramRunner program_;
};

TEST_F(TaskJourney, ARepeatingTaskKeepsItsWallClockThroughAYearOfClockChanges) {
    struct Case {
        const char* zone;
        const char* winter;
        const char* summer;
    };
    for (const auto& [zone, winter, summer] : {
             Case{"Europe/Berlin", "T08:00:00.000Z", "T07:00:00.000Z"},
             Case{"America/New_York", "T14:00:00.000Z", "T13:00:00.000Z"},
             // South of the equator, and by half an hour only.
             Case{"Australia/Lord_Howe", "T22:00:00.000Z", "T22:30:00.000Z"},
         }) {
        SCOPED_TRACE(zone);
        const std::string january = "2026-01-15T00:00:00Z";
        const std::string july = "2026-07-15T00:00:00Z";
        const std::string december = "2026-12-15T00:00:00Z";
        const auto added = at(january, zone, {"task", "add", "Walk daily 9am 2026-01-15"});
        EXPECT_EQ(text(added.output, "dueDate").substr(10), winter);

        const std::string id = text(added.output, "id");
        for (const auto& [now, time] : {std::pair(july, summer), std::pair(december, winter)}) {
            const std::string due = text(at(now, zone, {"task", "done", id}).output, "dueDate");
            EXPECT_EQ(due.substr(10), time);
            EXPECT_EQ(due.substr(0, 10), now.substr(0, 10));  // the first one after now
        }
    }
}

TEST_F(TaskJourney, TasksOfAnotherProcessAppearWhileListsAreReadAndThereIsOneInbox) {
    constexpr int count = 60;
    const std::vector<std::string> batch = program_.commandLine({"batch"});
    RunningProgram first(batch, program_.variables());
    RunningProgram second(batch, program_.variables());
    std::string lines[2];
    for (int i = 0; i < count; ++i) {
        for (int process = 0; process < 2; ++process) {
            lines[process] += R"({"op": "task.add", "sentence": "task )" + std::to_string(process)
                              + "." + std::to_string(i) + R"( today @Shared #Joint"})" + "\n";
        }
    }
    ASSERT_TRUE(first.write(lines[0]));
    ASSERT_TRUE(second.write(lines[1]));
    first.closeInput();
    second.closeInput();

    std::size_t seen = 0;
    for (int answered = 0; answered < count; ++answered) {
        ASSERT_TRUE(tesserine::json::parse(first.readLine().value()).at("ok").as_bool());
        ASSERT_TRUE(tesserine::json::parse(second.readLine().value()).at("ok").as_bool());
        if (answered % 10 != 0) continue;
        const auto tasks = list({"task", "list", "project", "Joint"});
        const std::size_t acknowledged = 2 * (static_cast<std::size_t>(answered) + 1);
        EXPECT_GE(tasks.size(), std::max(seen, acknowledged));
        seen = tasks.size();
        for (const auto& task : tasks) {
            EXPECT_EQ(tesserine::json::write(task.at("labels")), R"(["Shared"])");
        }
    }
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);

    const auto all = list({"task", "list", "today"});
    std::set<std::string> titles;
    std::set<std::int64_t> places;
    for (const auto& task : all) {
        titles.emplace(task.at("title").as_string());
        places.insert(task.at("sortIndex").as_int64());
    }
    EXPECT_EQ(titles.size(), 2U * count);
    EXPECT_EQ(places.size(), 2U * count);  // nobody took another's place
    EXPECT_EQ(list({"project", "list"}).size(), 1U);
    EXPECT_EQ(list({"tag", "list"}).size(), 1U);
    EXPECT_EQ(program_.run({"check"}).status, 0);
}

TEST_F(TaskJourney, TwoProcessesThatNeedTheInboxAtOnceMakeOne) {
    for (int round = 0; round < 5; ++round) {
        const ProgramRunner fresh;
        RunningProgram first(fresh.commandLine({"task", "add", "one"}), fresh.variables());
        RunningProgram second(fresh.commandLine({"task", "add", "two"}), fresh.variables());
        EXPECT_EQ(first.wait(), 0);
        EXPECT_EQ(second.wait(), 0);
        const Outcome projects = fresh.run({"project", "list", "--json"});
        const auto listed = tesserine::json::parse(projects.output).as_array();
        ASSERT_EQ(listed.size(), 1U) << projects.output;
        EXPECT_EQ(listed[0].at("taskCount").as_int64(), 2);
    }
}

TEST_F(TaskJourney, ADeletedProjectAndItsRulesLoseNoTask) {
    ASSERT_EQ(program_.run({"task", "add", "Send invoice #Work"}).status, 0);
    const Outcome twice = program_.run({"project", "add", "work"});
    EXPECT_EQ(twice.status, 1);
    EXPECT_EQ(twice.error, "A project called “work” already exists.\n");
    EXPECT_EQ(program_.run({"project", "delete", "Inbox"}).status, 1);
    EXPECT_EQ(program_.run({"project", "delete", "Work"}).status, 0);
    EXPECT_EQ(list({"task", "list", "inbox"}).size(), 1U);
}

}  // namespace
}  // namespace tesserine::test
