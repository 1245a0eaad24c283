#include "cli/CommandFixture.h"

namespace tesserine::cli {
namespace {

namespace fs = std::filesystem;

class ExportCommands : public CommandFixture {};

TEST_F(ExportCommands, LibraryGoesIntoANewFolder) {
    addNote("Plan", {"--notebook", "Office", "--html", "-"});
    mustRun({"task", "add", "Call Ada tomorrow"});
    const fs::path target = folder_ / "out";
    const auto summary =
        mustRun({"export", "library", "--to", target.string(), "--all", "--json"}).json();
    EXPECT_EQ(shown(summary.at("notesWritten")), "1");
    EXPECT_EQ(shown(summary.at("tasksWritten")), "1");
    const fs::path made = shown(summary.at("directory"));
    EXPECT_EQ(made.filename(), "Tesserine Export 2026-03-14 09.15");
    EXPECT_TRUE(fs::exists(made / "notes/Office/Plan.md"));
    EXPECT_TRUE(fs::exists(made / "tasks.md"));

    // Without options only the pages.
    EXPECT_EQ(
        mustRun({"export", "library", "--to", target.string()}).output,
        "Exported 1 note, 0 attachments (0 bytes) and 0 tasks to “" + made.string() + " 2”.\n");
    EXPECT_FALSE(fs::exists(made.string() + " 2/notes/Office/Plan.md"));
}

TEST_F(ExportCommands, VerifyFindsOneChangedByte) {
    const std::string id = addNote("Plan", {"--text", "text"});
    const fs::path file = folder_ / "a.txt";
    test::putContent(file, "bytes");
    mustRun({"note", "attach", id, file.string()});
    const fs::path made =
        shown(mustRun({"export", "library", "--to", (folder_ / "out").string(), "--all", "--json"})
                  .json()
                  .at("directory"));
    EXPECT_EQ(
        mustRun({"export", "verify", made.string()}).output.substr(0, 17), "1 note, 5 files, ");
    test::putContent(made / "attachments/a.txt", "bytez");
    const CommandResult damaged = run({"export", "verify", made.string()});
    EXPECT_EQ(damaged.status, ExitStatus::failed);
    EXPECT_EQ(
        damaged.output, "“attachments/a.txt” does not hold the bytes that the manifest says.\n");
}

TEST_F(ExportCommands, RefusesWhatCannotBeMeant) {
    EXPECT_EQ(
        run({"export", "library", "--to", (folder_ / "out").string()}).status,
        ExitStatus::noLibrary);
    EXPECT_FALSE(fs::exists(folder_ / "out"));
    addNote("Plan");
    EXPECT_EQ(run({"export", "library"}).status, ExitStatus::usage);
    EXPECT_EQ(
        run({"export", "library", "--to", (library() / "out").string()}).error,
        "Tesserine could not finish writing the export. An export cannot go into the folder of the "
        "library itself.\n");
    EXPECT_EQ(
        run({"export", "note", "Plan", "--to", (folder_ / "plan.pdf").string()}).status,
        ExitStatus::usage);

    stop_.request_stop();
    const CommandResult stopped = run({"export", "library", "--to", (folder_ / "out").string()});
    EXPECT_EQ(stopped.status, ExitStatus::interrupted);
    EXPECT_NE(stopped.error.find("The export was cancelled."), std::string::npos);
}

TEST_F(ExportCommands, NoteBecomesAFile) {
    const fs::path picture = folder_ / "dot.gif";
    test::putContent(picture, "GIF89a;");
    const std::string id = addNote("Plan", {"--text", "see *this*"});
    mustRun({"note", "attach", id, picture.string()});
    const auto exported = [&](const std::string& name) {
        const fs::path file = folder_ / name;
        mustRun({"export", "note", id, "--to", file.string()});
        EXPECT_EQ(run({"export", "note", id, "--to", file.string()}).status, ExitStatus::failed);
        return test::contentOf(file);
    };
    EXPECT_EQ(exported("plan.txt"), "see *this*\n");
    EXPECT_NE(exported("plan.md").find("# Plan\n\nsee \\*this\\*\n"), std::string::npos);
    EXPECT_EQ(test::contentOf(folder_ / "plan files" / "dot.gif"), "GIF89a;");
    EXPECT_NE(
        test::contentOf(folder_ / "plan.md").find("(plan%20files/dot.gif)"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder_ / "plan files 2")) << "of the refused attempt";
    EXPECT_NE(
        exported("plan.html").find("<img src=\"data:image/gif;base64,R0lGODlhOw==\">"),
        std::string::npos);
}

TEST_F(ExportCommands, DatedTasksGoIntoACalendarFile) {
    mustRun({"task", "add", "Call Ada tomorrow"});
    mustRun({"task", "add", "Someday"});
    const fs::path file = folder_ / "tasks.ics";
    EXPECT_EQ(
        mustRun({"export", "calendar", "--to", file.string()}).output,
        "Exported 1 task to “" + file.string() + "”.\n");
    EXPECT_NE(
        test::contentOf(file).find("SUMMARY:Call Ada\r\nDTSTART;VALUE=DATE:20260315\r\n"),
        std::string::npos);
    EXPECT_EQ(run({"export", "calendar", "--to", file.string()}).status, ExitStatus::failed);
    EXPECT_EQ(run({"export", "calendar"}).status, ExitStatus::usage);
}

}  // namespace
}  // namespace tesserine::cli
