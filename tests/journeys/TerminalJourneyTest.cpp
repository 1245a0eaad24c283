#include "base/sqlite/SQLiteDatabase.h"
#include "core/model/Schema.h"
#include "tests/journeys/ProgramRunner.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

namespace tesserine::test {
namespace {

TEST(TerminalJourney, ExitStatusesAreThoseThatScriptsRelyOn) {
    const ProgramRunner program;
    struct Case {
        std::vector<std::string> words;
        int status;
        bool hasError;
    };
    for (const auto& [words, status, hasError] : {
             Case{{"--help"}, 0, false},
             Case{{"note", "--help"}, 0, false},
             Case{{"--version"}, 0, false},
             Case{{"nonsense"}, 2, true},
             Case{{"note", "list", "--nonsense"}, 2, true},
             Case{{"note", "list"}, 3, true},
             Case{{}, 3, true},
             Case{{"note", "add", "--library", "/"}, 3, true},
             Case{{"init"}, 0, true},
             Case{{"note", "show", "nobody"}, 1, true},
             Case{{"note", "list"}, 0, true},
             Case{{"note", "list", "--json"}, 0, false},
         }) {
        const Outcome outcome = program.run(words);
        EXPECT_EQ(outcome.status, status) << testing::PrintToString(words) << outcome.error;
        EXPECT_EQ(!outcome.error.empty(), hasError)
            << testing::PrintToString(words) << outcome.error;
    }
}

TEST(TerminalJourney, TheLibraryIsForItsOwnerOnly) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"note", "add", "--title", "Plan"}).status, 0);
    std::size_t seen = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(program.folder())) {
        const bool isOurs = entry.path().filename() != "input"
                            && entry.path().filename() != "output"
                            && entry.path().filename() != "error";
        if (!isOurs) continue;
        struct stat status = {};
        ASSERT_EQ(::lstat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 077U, 0U) << entry.path();
        ++seen;
    }
    EXPECT_GE(seen, 3U);
}

TEST(TerminalJourney, AReaderThatLeavesEarlyIsNoFailureButAFullDiskIs) {
    const ProgramRunner program;
    std::string operations;
    for (int i = 0; i < 300; ++i) {
        operations += R"({"op": "note.add", "title": ")" + std::string(400, 'x') + "\"}\n";
    }
    ASSERT_EQ(program.run({"batch"}, operations).status, 0);

    RunningProgram listing(program.commandLine({"note", "list", "--json"}), program.variables());
    listing.closeOutput();
    EXPECT_EQ(listing.wait(), 0);

    const Outcome full = program.runInto("/dev/full", {"note", "list"});
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.error, "The output could not be written: No space left on device.\n");
}

TEST(TerminalJourney, WithoutStandardOutputTheLibraryIsNotWrittenOver) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"note", "add", "--title", "one"}).status, 0);
    EXPECT_EQ(program.runInto("-", {"note", "add", "--title", "two"}).status, 0);
    const Outcome listed = program.run({"note", "list"});
    EXPECT_EQ(std::ranges::count(listed.output, '\n'), 2);
    EXPECT_EQ(program.run({"check"}).status, 0);
}

TEST(TerminalJourney, AFileThatCannotBeReadStaysAsItIs) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"note", "add", "--title", "Plan"}).status, 0);
    const std::string sound = contentOf(program.libraryFile());

    std::string damaged = sound;
    std::fill(damaged.begin(), damaged.begin() + 4096, 'x');
    putContent(program.libraryFile(), damaged);
    const Outcome refused = program.run({"note", "add", "--title", "Other"});
    EXPECT_EQ(refused.status, 3);
    EXPECT_TRUE(refused.error.starts_with("Tesserine could not open its library. "))
        << refused.error;
    EXPECT_EQ(contentOf(program.libraryFile()), damaged);

    putContent(program.libraryFile(), sound);
    {
        SQLiteDatabase file(program.libraryFile());
        file.execute("PRAGMA user_version = " + std::to_string(Schema::number + 1));
        file.checkpoint(SQLiteDatabase::Checkpoint::truncate);
    }
    const std::string newer = contentOf(program.libraryFile());
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"note", "list"}, {"note", "add", "--title", "Other"}}) {
        const Outcome outcome = program.run(words);
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(
            outcome.error,
            "Tesserine could not open its library. This library was written by a newer version of "
            "Tesserine.\n");
    }
    EXPECT_EQ(contentOf(program.libraryFile()), newer);
}

TEST(TerminalJourney, AFolderThatCannotBeWrittenIsToldInASentence) {
    const ProgramRunner program;
    ASSERT_EQ(program.runUnprivileged({"note", "add", "--title", "Plan"}).status, 0);
    const std::string before = contentOf(program.libraryFile());
    std::filesystem::permissions(program.libraryFile(), std::filesystem::perms::owner_read);
    std::filesystem::permissions(
        program.library(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const Outcome outcome = program.runUnprivileged({"note", "add", "--title", "Other"});
    std::filesystem::permissions(program.library(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(outcome.status == 1 || outcome.status == 3) << outcome.status;
    EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1) << outcome.error;
    EXPECT_EQ(contentOf(program.libraryFile()), before);
}

TEST(TerminalJourney, OnATerminalTheEditorOpensTheBody) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"note", "add", "--title", "Plan", "--text", "old"}).status, 0);
    const auto editor = program.folder() / "an editor";
    putContent(editor, "#!/bin/sh\ngrep -q old \"$2\" && printf '**%s**' \"$1\" >\"$2\"\n");
    std::filesystem::permissions(editor, std::filesystem::perms::owner_all);
    auto variables = program.variables();
    variables["EDITOR"] = "'" + editor.string() + "' typed";
    variables["TMPDIR"] = program.folder().string();

    RunningProgram edit(
        program.commandLine({"note", "edit", "Plan"}), variables, Channel::terminal);
    EXPECT_TRUE(edit.readUntil("Changed “Plan”."));
    EXPECT_EQ(edit.wait(), 0);
    EXPECT_EQ(
        program.run({"note", "show", "Plan", "--html"}).output, "<p><strong>typed</strong></p>\n");
    for (const auto& entry : std::filesystem::directory_iterator(program.folder())) {
        EXPECT_NE(entry.path().extension(), ".md") << "the text stays in " << entry.path();
    }
}

TEST(TerminalJourney, OnlyATerminalThatLikesThemGetsColours) {
    const ProgramRunner program;
    ASSERT_EQ(program.run({"note", "add", "--title", "Plan"}).status, 0);
    struct Case {
        const char* name;
        const char* value;
        bool hasColours;
    };
    for (const auto& [name, value, hasColours] : {
             Case{"TERM", "xterm", true},
             Case{"NO_COLOR", "1", false},
             Case{"TERM", "dumb", false},
         }) {
        SCOPED_TRACE(std::string(name) + "=" + value);
        auto variables = program.variables();
        variables["TERM"] = "xterm";
        variables[name] = value;
        RunningProgram list(program.commandLine({"note", "list"}), variables, Channel::terminal);
        list.readLine();  // titles of the columns
        EXPECT_EQ(list.readLine().value_or("").find("\x1b[") != std::string::npos, hasColours);
        EXPECT_EQ(list.wait(), 0);
    }
}

TEST(TerminalJourney, CompletionsWorkInARealShell) {
    const ProgramRunner program;
    const Outcome script = program.run({"--generate", "bash"});
    ASSERT_EQ(script.status, 0);
    putContent(program.folder() / "completion", script.output);
    struct Case {
        std::string words;
        std::string offered;
    };
    for (const auto& [words, offered] : {
             Case{"tesserine noteb", "notebook"},
             Case{"tesserine --library x note revi", "revisions revision"},
             Case{"tesserine note list --templ", "--templates"},
             Case{"tesserine note list --sort t", "title"},
         }) {
        SCOPED_TRACE(words);
        const std::string check =
            "source " + (program.folder() / "completion").string() + "; COMP_WORDS=(" + words
            + "); COMP_CWORD=$((${#COMP_WORDS[@]}-1)); _tesserine; echo \"${COMPREPLY[*]}\"";
        RunningProgram shell({"bash", "-c", check}, program.variables());
        EXPECT_EQ(shell.readLine().value_or("(nothing)"), offered);
        EXPECT_EQ(shell.wait(), 0);
    }
}

}  // namespace
}  // namespace tesserine::test
