#include "cli/CommandFixture.h"

namespace tesserine::cli {
namespace {

class ImportCommands : public CommandFixture {
protected:
    ImportCommands() {
        std::filesystem::create_directories(folder_ / "notes/sub");
        test::putContent(folder_ / "notes/one.md", "# One\n\nSee [two](sub/two.md).\n");
        test::putContent(folder_ / "notes/sub/two.md", "# Two\n\n![gone](gone.png)\n");
    }

    CommandResult import(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"import", "markdown", (folder_ / "notes").string()});
        return mustRun(options);
    }
};

TEST_F(ImportCommands, ADryRunTellsWhatWouldComeAndMakesNothing) {
    const CommandResult looked = import({"--dry-run"});
    EXPECT_NE(looked.output.find("Would import 2 notes"), std::string::npos) << looked.output;
    EXPECT_NE(looked.output.find("gone.png"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(library()));
    mustRun({"init"});
    EXPECT_EQ(shown(import({"--dry-run", "--json"}).json().at("found")), "2");
    EXPECT_EQ(mustRun({"note", "list"}).output, "");
}

TEST_F(ImportCommands, TheReportSaysWhatCameInAndIsKept) {
    const CommandResult imported = import({"--tag", "imported"});
    EXPECT_NE(
        imported.output.find("Found 2 notes: 2 imported, 0 replaced, 0 skipped, 0 failed"),
        std::string::npos)
        << imported.output;
    EXPECT_NE(imported.output.find("“Two”\n  "), std::string::npos);  // and its warning
    EXPECT_EQ(
        mustRun({"note", "list", "--tag", "imported", "--json"}).json().as_array().size(), 2U);
    EXPECT_NE(mustRun({"note", "backlinks", "Two"}).output.find("One"), std::string::npos);

    clock_.advance(Instant::Duration(60));
    const auto again = import({"--json"}).json();
    EXPECT_EQ(shown(again.at("skipped")), "2");
    clock_.advance(Instant::Duration(60));
    EXPECT_EQ(shown(import({"--duplicates", "keep", "--json"}).json().at("imported")), "2");

    const auto listed = mustRun({"import", "list", "--json"}).json();
    ASSERT_EQ(listed.as_array().size(), 3U);
    const std::string first = shown(listed.at(2).at("id"));
    EXPECT_EQ(mustRun({"import", "show", first}).output, imported.output);

    const auto undone = mustRun({"import", "undo", first, "--json"}).json();
    EXPECT_EQ(shown(undone.at("trashed")), "2");
    EXPECT_NE(
        mustRun({"import", "show", first}).output.find("It was undone at 2026-03-14 09:17."),
        std::string::npos);
}

TEST_F(ImportCommands, TheNotebookThatIsNamedTakesEverything) {
    mustRun({"notebook", "add", "Archive"});
    mustRun({"notebook", "add", "Old", "--parent", "Archive"});
    import({"--notebook", "old"});
    const auto notebooks = mustRun({"notebook", "list", "--json"}).json();
    std::string paths;
    for (const auto& notebook : notebooks.as_array()) {
        paths += shown(notebook.at("path")) + ": " + shown(notebook.at("noteCount")) + "\n";
    }
    EXPECT_EQ(paths.find("\nOld"), std::string::npos) << paths;
    EXPECT_NE(paths.find("Archive / Old"), std::string::npos) << paths;
}

TEST_F(ImportCommands, ABackupComesBeforeAnImportIntoALibrary) {
    addNote("mine");
    import();
    const auto backups = mustRun({"backup", "list", "--json"}).json();
    ASSERT_EQ(backups.as_array().size(), 1U);  // the daily one, of the same state, will do
    import();
    EXPECT_EQ(shown(mustRun({"backup", "list", "--json"}).json().at(0).at("reason")), "import");
    import({"--no-backup"});
    EXPECT_EQ(mustRun({"backup", "list", "--json"}).json().as_array().size(), 2U);
}

TEST_F(ImportCommands, AnEvernoteExportIsComparedWithWhatCameIn) {
    const std::string file = (folder_ / "Recipes.enex").string();
    test::putContent(
        file,
        "<en-export><note><title>Tea</title><content><![CDATA[<en-note>Boil <en-media hash=\""
        "0cc175b9c0f1b6a831c399e269772661\"/></en-note>]]></content><resource><data>YQ==</data>"
        "</resource><task><title>Buy tea</title></task></note></en-export>");
    const CommandResult looked = mustRun({"import", "enex", file, "--dry-run"});
    EXPECT_NE(looked.output.find("Would import 1 note"), std::string::npos) << looked.output;
    EXPECT_FALSE(std::filesystem::exists(library()));

    const CommandResult imported = mustRun({"import", "enex", file, "--tag", "new"});
    EXPECT_NE(
        imported.output.find("Compared with the source: 1 of 1 note and 1 of 1 file are in the "
                             "library, every byte equal."),
        std::string::npos)
        << imported.output;
    EXPECT_EQ(mustRun({"task", "list", "all", "--json"}).json().as_array().size(), 1U);
    const auto again = mustRun({"import", "enex", file, "--json"}).json();
    EXPECT_EQ(shown(again.at("skipped")), "1");
    EXPECT_EQ(shown(again.at("check").at("notes")), "1");

    test::putContent(folder_ / "plan.txt", "no export");
    const CommandResult refused = run({"import", "enex", (folder_ / "plan.txt").string()});
    EXPECT_EQ(refused.status, ExitStatus::failed);
    EXPECT_NE(refused.output.find("“plan.txt” is not an Evernote export file."), std::string::npos);
}

TEST_F(ImportCommands, AppleNotesAreRefusedOrReadByWhatTheyAre) {
    const std::string exported = (folder_ / "notes").string();
    EXPECT_NE(
        mustRun({"import", "apple-notes", exported}).output.find("Found 2 notes: 2 imported"),
        std::string::npos);
    EXPECT_EQ(
        shown(mustRun({"import", "list", "--json"}).json().at(0).at("format")), "apple-notes");
    test::putContent(folder_ / "NoteStore.sqlite", "no store");
    const CommandResult refused =
        run({"import", "apple-notes", (folder_ / "NoteStore.sqlite").string()});
    EXPECT_EQ(refused.status, ExitStatus::failed);
    EXPECT_NE(refused.error.find("nothing was imported"), std::string::npos) << refused.error;
}

TEST_F(ImportCommands, ASourceThatIsNotThereFails) {
    const CommandResult result = run({"import", "markdown", (folder_ / "nowhere").string()});
    EXPECT_EQ(result.status, ExitStatus::failed);
    EXPECT_NE(result.error.find("nowhere"), std::string::npos);
}

}  // namespace
}  // namespace tesserine::cli
