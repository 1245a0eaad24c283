#include "tests/journeys/ProgramRunner.h"

#include <gtest/gtest.h>

#include <csignal>

namespace tesserine::test {
namespace {

namespace fs = std::filesystem;

class ExportJourney : public ::testing::Test {
protected:
    ExportJourney() {
        for (const char* title : {"One", "Two", "Three"}) {
            EXPECT_EQ(program_.run({"note", "add", "--title", title, "--text", "x"}).status, 0);
        }
    }

    fs::path target() const { return program_.folder() / "out"; }
    std::vector<std::string> exporting() const {
        return {"export", "library", "--to", target().string(), "--all"};
    }

    ProgramRunner program_;
};

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(ExportJourney, AKillLeavesNoManifestAndTheLibraryWhole) {
    auto variables = program_.variables();
    variables["TESSERINE_FAIL_POINT"] = "export.file:4:kill";
    RunningProgram killed(program_.commandLine(exporting()), variables);
    EXPECT_EQ(killed.wait(), 128 + SIGKILL);
    const fs::path directory = fs::directory_iterator(target())->path();
    EXPECT_TRUE(fs::exists(directory / "notes"));
    EXPECT_FALSE(fs::exists(directory / "manifest.json"));
    EXPECT_EQ(program_.run({"export", "verify", directory.string()}).status, 1);

    EXPECT_EQ(program_.run(exporting()).status, 0);
    EXPECT_EQ(program_.run({"check"}).status, 0);
}
#endif

TEST_F(ExportJourney, AFolderThatCannotBeWrittenIsRefusedBeforeTheFirstByte) {
    fs::create_directory(target());
    fs::permissions(target(), fs::perms::owner_read | fs::perms::owner_exec);
    const Outcome refused = program_.runUnprivileged(exporting());
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(
        refused.error.starts_with("Tesserine could not finish writing the export. “Tesserine "
                                  "Export "))
        << refused.error;
    EXPECT_TRUE(fs::is_empty(target()));
}

}  // namespace
}  // namespace tesserine::test
