#include "base/JSON.h"
#include "tests/journeys/ProgramRunner.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <csignal>
#include <set>
#include <sstream>

namespace tesserine::test {
namespace {

std::string sharedAddition(const std::string& title) {
    return R"({"op": "note.add", "title": ")" + title
           + R"(", "tags": ["shared"], "notebook": "All"})"
             "\n";
}

std::string idIn(const std::string& answer) {
    return std::string(json::parse(answer).at("id").as_string());
}

/// Titles of the notes in the library.
std::multiset<std::string> titles(const ProgramRunner& program) {
    std::multiset<std::string> result;
    const Outcome listed = program.run({"note", "list", "--json"});
    EXPECT_EQ(listed.status, 0) << listed.error;
    const auto notes = json::parse(listed.output);
    for (const auto& note : notes.as_array()) {
        result.emplace(note.at("title").as_string());
    }
    return result;
}

TEST(ConcurrencyJourney, TwoProcessesWriteOneLibraryAndNothingIsLost) {
    const ProgramRunner program;
    RunningProgram first(program.commandLine({"batch"}), program.variables());
    RunningProgram second(program.commandLine({"batch"}), program.variables());
    constexpr int count = 60;
    std::string firstLines;
    std::string secondLines;
    for (int i = 0; i < count; ++i) {
        firstLines += sharedAddition("first " + std::to_string(i));
        secondLines += sharedAddition("second " + std::to_string(i));
    }
    ASSERT_TRUE(first.write(firstLines));
    ASSERT_TRUE(second.write(secondLines));
    first.closeInput();
    second.closeInput();
    for (int i = 0; i < count; ++i) {
        for (RunningProgram* process : {&first, &second}) {
            const auto answer = process->readLine();
            ASSERT_TRUE(answer);
            EXPECT_TRUE(json::parse(*answer).at("ok").as_bool()) << *answer;
        }
    }
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);

    EXPECT_EQ(titles(program).size(), 2U * count);
    // Both looked for the notebook and the tag at the same time, and one of them made each.
    EXPECT_EQ(
        json::parse(program.run({"notebook", "list", "--json"}).output).as_array().size(), 1U);
    EXPECT_EQ(json::parse(program.run({"tag", "list", "--json"}).output).as_array().size(), 1U);
    const Outcome check = program.run({"check"});
    EXPECT_EQ(check.status, 0) << check.output << check.error;
}

TEST(ConcurrencyJourney, TheSameNoteEditedInTwoTerminalsKeepsBothBodies) {
    const ProgramRunner program;
    RunningProgram batch(program.commandLine({"batch"}), program.variables());
    ASSERT_TRUE(batch.write(R"({"op": "note.add", "title": "Plan", "text": "one"})"
                            "\n"));
    const std::string id = idIn(batch.readLine().value());
    ASSERT_EQ(program.run({"note", "edit", id, "--text", "elsewhere"}).status, 0);
    ASSERT_TRUE(batch.write(
        R"({"op": "note.set", "id": ")" + id
        + R"(", "text": "here", "ifVersion": 1})"
          "\n"));
    EXPECT_TRUE(json::parse(batch.readLine().value()).at("conflict").as_bool());
    batch.closeInput();
    EXPECT_EQ(batch.wait(), 0);

    const auto note = json::parse(program.run({"note", "show", id, "--json"}).output);
    EXPECT_EQ(note.at("plainText").as_string(), "here");
    EXPECT_TRUE(note.at("hasConflict").as_bool());
    EXPECT_EQ(program.run({"note", "revision", id, "1"}).output, "elsewhere\n");
}

TEST(ConcurrencyJourney, WhatABatchAcknowledgedSurvivesAKill) {
    const ProgramRunner program;
    SeededRandom random(41);
    std::set<std::string> acknowledged;
    for (int round = 0; round < 8; ++round) {
        RunningProgram batch(program.commandLine({"batch"}), program.variables());
        std::string lines;
        for (int i = 0; i < 200; ++i) {
            lines += sharedAddition("note " + std::to_string(round) + "." + std::to_string(i));
        }
        ASSERT_TRUE(batch.write(lines));
        const std::uint64_t answers = 1 + random.below(40);
        for (std::uint64_t i = 0; i < answers; ++i) {
            acknowledged.insert(idIn(batch.readLine().value()));
        }
        batch.signal(SIGKILL);
        EXPECT_EQ(batch.wait(), 128 + SIGKILL);
    }

    std::set<std::string> present;
    std::istringstream dump(program.run({"dump", "--entity", "CDNote"}).output);
    for (std::string line; std::getline(dump, line);) {
        present.insert(idIn(line));
    }
    for (const std::string& id : acknowledged) {
        EXPECT_TRUE(present.contains(id)) << id;
    }
    const Outcome check = program.run({"check"});
    EXPECT_EQ(check.status, 0) << check.output << check.error;
}

TEST(ConcurrencyJourney, CtrlCEndsABatchThatWaitsForItsInput) {
    const ProgramRunner program;
    RunningProgram batch(program.commandLine({"batch"}), program.variables());
    ASSERT_TRUE(batch.write(sharedAddition("Plan")));
    ASSERT_TRUE(batch.readLine());
    batch.signal(SIGINT);
    EXPECT_EQ(batch.wait(), 130);
    EXPECT_EQ(titles(program), std::multiset<std::string>{"Plan"});
}

}  // namespace
}  // namespace tesserine::test
