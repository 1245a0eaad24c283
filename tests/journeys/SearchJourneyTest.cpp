#include "base/JSON.h"
#include "tests/journeys/ProgramRunner.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace tesserine::test {
namespace {

std::string invoiceAddition(const std::string& title) {
    return R"({"op": "note.add", "title": ")" + title
           + R"(", "text": "an invoice to pay"})"
             "\n";
}

/// The titles a query finds, as JSON says them.
std::size_t countOf(const ProgramRunner& program, const std::string& query) {
    const Outcome found = program.run({"search", "--json", "--limit", "10000", "--", query});
    EXPECT_EQ(found.status, 0) << found.error;
    return json::parse(found.output).at("results").as_array().size();
}

std::string healthy(int notes) {
    const std::string count = std::to_string(notes);
    return count + " of " + count
           + " notes, 0 of 0 tasks, 0 of 0 attachments with text indexed — up to date\n";
}

TEST(SearchJourney, OneProcessSearchesWhileAnotherWrites) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"init"}).status, 0);
    RunningProgram writer(program.commandLine({"batch"}), program.variables());
    RunningProgram reader(program.commandLine({"batch"}), program.variables());
    constexpr int noteCount = 200;
    for (int i = 0; i < noteCount; ++i) {
        ASSERT_TRUE(writer.write(invoiceAddition("Note " + std::to_string(i))));
    }
    writer.closeInput();
    std::size_t seen = 0;
    for (int i = 0; i < noteCount; ++i) {
        ASSERT_TRUE(
            reader.write("{\"op\": \"search\", \"query\": \"invoice\", \"limit\": 1000}\n"));
        const auto written = writer.readLine();
        const auto answer = reader.readLine();
        ASSERT_TRUE(written && answer);
        const auto response = json::parse(*answer);
        ASSERT_TRUE(response.at("ok").as_bool()) << *answer;
        const std::size_t found = response.at("results").as_array().size();
        EXPECT_GE(found, seen);  // what was found once stays found
        seen = found;
    }
    reader.closeInput();
    EXPECT_EQ(writer.wait(), 0);
    EXPECT_EQ(reader.wait(), 0);
    EXPECT_EQ(countOf(program, "invoice"), std::size_t{noteCount});
    EXPECT_EQ(program.run({"index", "status"}).output, healthy(noteCount));
}

TEST(SearchJourney, AKilledRebuildIsMendedByTheNextSearch) {
    const ProgramRunner program;
    std::string lines;
    constexpr int noteCount = 600;
    for (int i = 0; i < noteCount; ++i) {
        lines += invoiceAddition("Note " + std::to_string(i));
    }
    ASSERT_EQ(program.run({"batch"}, lines).status, 0);
    ASSERT_EQ(countOf(program, "invoice"), std::size_t{noteCount});
    for (int round = 0; round < 4; ++round) {
        RunningProgram rebuild(program.commandLine({"index", "rebuild"}), program.variables());
        std::this_thread::sleep_for(std::chrono::milliseconds(60 * round));
        rebuild.signal(SIGKILL);
        rebuild.wait();
        const std::string status = program.run({"index", "status"}).output;
        const bool isWhole = status == healthy(noteCount);
        const bool saysSo = status.find("a rebuild was interrupted") != std::string::npos;
        EXPECT_TRUE(isWhole || saysSo) << status;
        EXPECT_EQ(countOf(program, "invoice"), std::size_t{noteCount});
        EXPECT_EQ(program.run({"index", "status"}).output, healthy(noteCount));
    }
}

TEST(SearchJourney, WhateverIsTypedIsAnswered) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"note", "add", "--title", "Rent"}).status, 0);
    for (const char* query :
         {"\"",
          "(((",
          "tag:",
          "-",
          "NEAR(",
          "*",
          "OR",
          "a AND",
          "'; DROP TABLE docs; --",
          "\xFF"}) {
        const Outcome answer = program.run({"search", "--", query});
        EXPECT_EQ(answer.status, 0) << query << answer.error;
    }
    EXPECT_EQ(countOf(program, "rent"), 1U);
}

}  // namespace
}  // namespace tesserine::test
