#include "base/JSON.h"
#include "tests/journeys/ProgramRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

namespace tesserine::test {
namespace {

constexpr int fileCount = 1200;

class ImportJourney : public ::testing::Test {
protected:
    ImportJourney() {
        std::filesystem::create_directories(source());
        for (int i = 0; i < fileCount; ++i) {
            putContent(
                source() / ("file" + std::to_string(i) + ".md"),
                "# Note " + std::to_string(i) + "\n\nSome *text* of its own.\n");
        }
    }

    std::filesystem::path source() const { return program_.folder() / "source"; }
    std::vector<std::string> importing() const { return {"import", "markdown", source().string()}; }

    /// Imports again, to the end, and examines what is there then.
    void expectRestIsImported() {
        auto words = importing();
        words.emplace_back("--json");
        const Outcome again = program_.run(words);
        ASSERT_EQ(again.status, 0) << again.error;
        const auto report = json::parse(again.output);
        EXPECT_EQ(report.at("found").as_int64(), fileCount);
        EXPECT_EQ(report.at("failed").as_int64(), 0);
        EXPECT_EQ(report.at("imported").as_int64() + report.at("skipped").as_int64(), fileCount);
        const Outcome listed = program_.run({"note", "list"});
        EXPECT_EQ(std::ranges::count(listed.output, '\n'), fileCount);
        const Outcome check = program_.run({"check"});
        EXPECT_EQ(check.status, 0) << check.output << check.error;
    }

    ProgramRunner program_;
};

TEST_F(ImportJourney, CtrlCStopsItCleanlyAndItCanBeRunAgain) {
    RunningProgram import(
        program_.commandLine(importing()), program_.variables(), Channel::terminal);
    ASSERT_TRUE(import.readUntil("Importing"));
    import.signal(SIGINT);
    EXPECT_TRUE(import.readUntil("stopped before its end"));
    EXPECT_EQ(import.wait(), 130);
    expectRestIsImported();
}

TEST_F(ImportJourney, AKillLosesNothingThatWasSavedAndItCanBeRunAgain) {
    RunningProgram import(
        program_.commandLine(importing()), program_.variables(), Channel::terminal);
    // Twice: told at most ten times in a second, so that something may be saved by then.
    ASSERT_TRUE(import.readUntil(" of "));
    ASSERT_TRUE(import.readUntil(" of "));
    import.signal(SIGKILL);
    EXPECT_EQ(import.wait(), 128 + SIGKILL);
    expectRestIsImported();
}

TEST_F(ImportJourney, UndoTakesEverythingBackToTheTrash) {
    auto words = importing();
    words.emplace_back("--json");
    const auto report = json::parse(program_.run(words).output);
    const std::string id(report.at("id").as_string());
    ASSERT_EQ(program_.run({"import", "undo", id}).status, 0);
    EXPECT_EQ(program_.run({"note", "list"}).output, "");
    EXPECT_EQ(
        std::ranges::count(program_.run({"note", "list", "--trash"}).output, '\n'), fileCount);
}

}  // namespace
}  // namespace tesserine::test
