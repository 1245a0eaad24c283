#include "cli/CommandFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace tesserine::cli {
namespace {

class LockCommands : public CommandFixture {
protected:
    /// The library's files, without its backups, that hold `text`.
    std::string filesWith(const std::string& text) {
        std::string names;
        for (auto entry = std::filesystem::recursive_directory_iterator(library());
             entry != std::filesystem::recursive_directory_iterator();
             ++entry) {
            if (entry->path().filename() == "Backups") entry.disable_recursion_pending();
            const bool holds = entry->is_regular_file()
                               && test::contentOf(entry->path()).find(text) != std::string::npos;
            if (holds) names += entry->path().filename().string() + " ";
        }
        return names;
    }
};

TEST_F(LockCommands, LockAPassageThatOnlyItsPassphraseOpens) {
    addNote("Plan", {"--text", "Meet at the old mill."});
    const auto lock = mustRun({"note", "lock", "Plan", "--text", "old mill"}, "correct horse\n");
    EXPECT_EQ(lock.output, "Locked the passage in “Plan”.\n");
    EXPECT_NE(lock.error.find("Backups, exports"), std::string::npos);
    EXPECT_EQ(
        mustRun({"note", "show", "Plan", "--text"}).output, "Meet at the\n🔒 Encrypted text\n.\n");

    EXPECT_EQ(mustRun({"note", "unlock", "Plan"}, "correct horse").output, "old mill\n");
    const auto wrong = run({"note", "unlock", "Plan"}, "wrong\n");
    EXPECT_EQ(wrong.status, ExitStatus::failed);
    EXPECT_EQ(wrong.error, "That passphrase didn't work.\n");
    EXPECT_EQ(run({"note", "unlock", "Plan"}, "").error, "That passphrase didn't work.\n");

    const auto removed = mustRun({"note", "unlock", "Plan", "--remove"}, "correct horse\n");
    EXPECT_NE(removed.error.find("This cannot be undone."), std::string::npos);
    EXPECT_EQ(mustRun({"note", "show", "Plan", "--text"}).output, "Meet at the\nold mill\n.\n");
    EXPECT_EQ(
        run({"note", "unlock", "Plan"}, "x").error, "There is no locked passage in “Plan”.\n");
}

TEST_F(LockCommands, LeaveTheTextInNoFileOfTheLibrary) {
    addNote("Plan", {"--text", "Meet at the old mill."});
    clock_.advance(std::chrono::hours(1));
    mustRun({"note", "edit", "Plan", "--text", "Do meet at the old mill."});
    EXPECT_EQ(mustRun({"note", "revisions", "Plan", "--json"}).json().as_array().size(), 1U);
    mustRun({"search", "meet"});  // makes the index
    EXPECT_NE(filesWith("old mill").find("Search.sqlite"), std::string::npos);
    EXPECT_NE(filesWith("old mill").find("Tesserine.sqlite"), std::string::npos);

    clock_.advance(std::chrono::hours(1));
    mustRun({"note", "lock", "Plan", "--text", "old mill"}, "correct horse\n");
    EXPECT_TRUE(mustRun({"note", "revisions", "Plan", "--json"}).json().as_array().empty());
    EXPECT_EQ(filesWith("old mill"), "");
    EXPECT_EQ(mustRun({"search", "meet", "--json"}).json().at("results").as_array().size(), 1U);
}

TEST_F(LockCommands, KeepEarlierVersionsWhenTold) {
    addNote("Plan", {"--text", "old mill"});
    clock_.advance(std::chrono::hours(1));
    mustRun({"note", "lock", "Plan", "--text", "old mill", "--keep-versions"}, "correct horse\n");
    EXPECT_EQ(mustRun({"note", "revisions", "Plan", "--json"}).json().as_array().size(), 1U);
}

TEST_F(LockCommands, TakePassphrasesFromFilesAndPassagesFromStandardInput) {
    const auto file = (folder_ / "passphrase").string();
    test::putContent(file, "correct horse\r\nsecond line");
    addNote("Plan", {"--text", "a\nb\nc"});
    mustRun({"note", "lock", "Plan", "--text", "-", "--passphrase-file", file}, "a\nb\n");
    mustRun({"note", "lock", "Plan", "--text", "c", "--passphrase-file", "-"}, "other horse");

    const auto opened =
        mustRun({"note", "unlock", "Plan", "--json", "--passphrase-file", file}).json();
    EXPECT_EQ(
        shown(opened),
        "[{\"number\":1,\"text\":\"a\\nb\"},"
        "{\"number\":2,\"error\":\"That passphrase didn't work.\"}]");
    EXPECT_EQ(mustRun({"note", "unlock", "Plan", "--number", "2"}, "other horse").output, "c\n");

    EXPECT_EQ(run({"note", "lock", "Plan", "--text", "-"}, "a").status, ExitStatus::usage);
    EXPECT_EQ(run({"note", "lock", "Plan"}, "pass\n").status, ExitStatus::usage);
    EXPECT_EQ(
        run({"note", "lock", "Plan", "--text", "a"}, "\n").error, "The passphrase is empty.\n");
    EXPECT_NE(
        run({"note", "lock", "Plan", "--text", "a"}, "pass\n")
            .error.find("Couldn't encrypt the selection."),
        std::string::npos);
}

TEST_F(LockCommands, AskOnATerminalWithoutShowingWhatIsTyped) {
    addNote("Plan", {"--text", "old mill"});
    clock_.advance(std::chrono::hours(1));
    isTerminal_ = true;
    const auto differing =
        run({"note", "lock", "Plan", "--text", "old mill"}, "correct horse\ncorrect hose\n");
    EXPECT_EQ(differing.status, ExitStatus::failed);
    EXPECT_EQ(typing_, "hidden shown hidden shown ");

    const auto locked =
        mustRun({"note", "lock", "Plan", "--text", "old mill"}, "horse\nhorse\nn\n");
    EXPECT_NE(locked.error.find("less than 8 characters"), std::string::npos);
    EXPECT_NE(locked.error.find("Remove them? [Y/n]"), std::string::npos);
    EXPECT_EQ(mustRun({"note", "revisions", "Plan", "--json"}).json().as_array().size(), 1U);

    const auto kept = run({"note", "unlock", "Plan", "--remove"}, "horse\n\n");
    EXPECT_EQ(kept.status, ExitStatus::failed);
    EXPECT_NE(kept.error.find("Enter the passphrase you set"), std::string::npos);
    mustRun({"note", "unlock", "Plan", "--remove"}, "horse\ny\n");
    EXPECT_EQ(mustRun({"note", "show", "Plan", "--text"}).output, "old mill\n");
}

}  // namespace
}  // namespace tesserine::cli
