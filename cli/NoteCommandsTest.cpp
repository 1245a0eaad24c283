#include "cli/CommandFixture.h"
#include "cli/Names.h"

namespace tesserine::cli {
namespace {

class NoteCommands : public CommandFixture {};

constexpr const char* firstID = "AAAA0000-0000-4000-8000-000000000001";
constexpr const char* secondID = "AAAA0000-0000-4000-8000-000000000002";

TEST(Names, IdentifiersMayBeShortenedToFourDigits) {
    struct Case {
        const char* typed;
        const char* first;
        const char* last;
    };
    for (const auto& [typed, first, last] : {
             Case{"", "", ""},
             Case{"abc", "", ""},
             Case{"Plan", "", ""},
             Case{"12345678x", "", ""},
             Case{"123456789", "", ""},  // the hyphen is missing
             Case{
                 "abcd",
                 "ABCD0000-0000-0000-0000-000000000000",
                 "ABCDFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF"},
             Case{
                 "abcd1234-5",
                 "ABCD1234-5000-0000-0000-000000000000",
                 "ABCD1234-5FFF-FFFF-FFFF-FFFFFFFFFFFF"},
             Case{
                 "abcd1234-",
                 "ABCD1234-0000-0000-0000-000000000000",
                 "ABCD1234-FFFF-FFFF-FFFF-FFFFFFFFFFFF"},
         }) {
        SCOPED_TRACE(typed);
        const auto range = idsBeginningWith(typed);
        EXPECT_EQ(range ? range->first.text() : "", first);
        EXPECT_EQ(range ? range->second.text() : "", last);
    }
}

TEST_F(NoteCommands, AddedNoteIsThereWithEverythingItWasGiven) {
    const std::string id = addNote(
        "Plan",
        {"--notebook",
         "Work / Plans",
         "--tag",
         "urgent",
         "--tag",
         "Berlin",
         "--text",
         "a < b\nc",
         "--source-url",
         "https://example.org"});
    const boost::json::object note = mustRun({"note", "show", id, "--json"}).json().as_object();
    EXPECT_EQ(shown(note.at("id")), id);
    EXPECT_EQ(shown(note.at("title")), "Plan");
    EXPECT_EQ(shown(note.at("html")), "<p>a &lt; b</p><p>c</p>");
    EXPECT_EQ(shown(note.at("plainText")), "a < b\nc");
    EXPECT_EQ(shown(note.at("sourceURL")), "https://example.org");
    EXPECT_EQ(shown(note.at("createdAt")), "2026-03-14T09:15:00.000Z");
    EXPECT_EQ(shown(note.at("trashedAt")), "null");
    EXPECT_EQ(shown(note.at("contentVersion")), "1");
    EXPECT_EQ(note.at("tags").as_array().size(), 2U);

    EXPECT_EQ(
        mustRun({"note", "show", "Plan"}).output,
        "Plan\n"
        "Id          "
            + id
            + "\n"
              "Notebook    Work / Plans\n"
              "Tags        urgent, Berlin\n"
              "Created     2026-03-14 09:15\n"
              "Changed     2026-03-14 09:15\n"
              "Source      https://example.org\n"
              "\n"
              "a < b\nc\n");
}

TEST_F(NoteCommands, BodiesComeFromFilesAndStandardInput) {
    const auto file = folder_ / "body.html";
    test::putContent(file, "<p>from <script>x</script><b>file</b></p>");
    const std::string fromFile = addNote("File", {"--html", file.string()});
    EXPECT_EQ(
        mustRun({"note", "show", fromFile, "--html"}).output,
        "<p>from <strong>file</strong></p>\n");

    const std::string typed =
        mustRun({"note", "add", "--markdown", "-"}, "# Head\n\n- [x] done\n").line();
    EXPECT_EQ(mustRun({"note", "show", typed, "--text"}).output.substr(0, 4), "Head");

    EXPECT_EQ(
        run({"note", "add", "--html", "-", "--text", "x"}, "y").error,
        "--html and --text cannot be given together.\n");
    const CommandResult missing = run({"note", "add", "--html", "no-such-file"});
    EXPECT_EQ(missing.status, ExitStatus::failed);
    EXPECT_NE(missing.error.find("no-such-file"), std::string::npos);
}

TEST_F(NoteCommands, AmbiguousNamesListTheCandidates) {
    addNote("Plan", {"--id", firstID});
    addNote("Plan", {"--id", secondID});
    const CommandResult byTitle = run({"note", "show", "Plan"});
    EXPECT_EQ(byTitle.status, ExitStatus::failed);
    EXPECT_EQ(
        byTitle.error,
        "“Plan” fits several things; name one of them by its id:\n"
        "  AAAA0000-0000-4000-8000-000000000001  Plan\n"
        "  AAAA0000-0000-4000-8000-000000000002  Plan\n");
    EXPECT_EQ(run({"note", "show", "aaaa0000-0000"}).status, ExitStatus::failed);
    EXPECT_EQ(run({"note", "show", firstID}).status, ExitStatus::done);

    // Of two notes of one title, the one outside the trash is meant, and "restore" means the other.
    mustRun({"note", "trash", secondID});
    EXPECT_EQ(shown(mustRun({"note", "show", "Plan", "--json"}).json().at("id")), firstID);
    EXPECT_EQ(shown(mustRun({"note", "restore", "Plan", "--json"}).json().at("id")), secondID);

    EXPECT_EQ(run({"note", "show", "Pla"}).error, "The note “Pla” could not be found.\n");
}

TEST_F(NoteCommands, AnIdThatIsTakenIsRefused) {
    addNote("Plan", {"--id", firstID});
    EXPECT_EQ(
        run({"note", "add", "--id", firstID}).error,
        "A note with the id " + std::string(firstID) + " is there already.\n");
    EXPECT_EQ(run({"note", "add", "--id", "AAAA"}).error, "--id takes a UUID.\n");
}

TEST_F(NoteCommands, ListsFilterAndSort) {
    addNote("b", {"--notebook", "Work", "--tag", "x"});
    clock_.advance(Instant::Duration(60));
    addNote("C", {"--notebook", "Work"});
    clock_.advance(Instant::Duration(60));
    addNote("a", {"--tag", "X"});
    clock_.advance(Instant::Duration(60));
    mustRun({"note", "pin", "b"});
    addNote("gone");
    mustRun({"note", "trash", "gone"});
    mustRun({"template", "seed"});

    struct Case {
        std::vector<std::string> options;
        std::string titles;
    };
    for (const auto& [options, titles] : {
             Case{{}, "b a C "},
             Case{{"--sort", "created"}, "a C b "},
             Case{{"--sort", "title"}, "a b C "},
             Case{{"--sort", "title", "--limit", "2"}, "a b "},
             Case{{"--limit", "1"}, "b "},
             Case{{"--notebook", "work"}, "b C "},
             Case{{"--tag", "x"}, "b a "},
             Case{{"--tag", "x", "--notebook", "Work"}, "b "},
             Case{{"--pinned"}, "b "},
             Case{{"--trash"}, "gone "},
         }) {
        SCOPED_TRACE(testing::PrintToString(options));
        std::vector<std::string> line{"note", "list", "--json"};
        line.insert(line.end(), options.begin(), options.end());
        std::string found;
        const auto listed = mustRun(line).json();
        for (const auto& note : listed.as_array()) {
            found += std::string(note.at("title").as_string()) + " ";
        }
        EXPECT_EQ(found, titles);
    }
    EXPECT_EQ(run({"note", "list", "--tag", "none such"}).status, ExitStatus::failed);
    EXPECT_EQ(mustRun({"note", "list", "--templates", "--json"}).json().as_array().size(), 2U);
}

TEST_F(NoteCommands, AListIsOneLineForEachNote) {
    const std::string id = addNote("Two\nlines\x1b[2J", {"--notebook", "Work"});
    mustRun({"note", "pin", id});
    EXPECT_EQ(
        mustRun({"note", "list"}).output,
        id.substr(0, 8) + "  2026-03-14 09:15  Two lines[2J  Work  pinned\n");
}

TEST_F(NoteCommands, EditsChangeWhatTheyNameAndNothingElse) {
    const std::string id = addNote("Plan", {"--text", "old", "--tag", "a", "--notebook", "Work"});
    mustRun({"note", "edit", id, "--title", "New", "--add-tag", "b", "--remove-tag", "a"});
    mustRun({"note", "edit", id, "--text", "new", "--no-notebook"});
    const auto note = mustRun({"note", "show", id, "--json"}).json();
    EXPECT_EQ(shown(note.at("title")), "New");
    EXPECT_EQ(shown(note.at("plainText")), "new");
    EXPECT_EQ(shown(note.at("notebook")), "null");
    EXPECT_EQ(note.at("tags").as_array().size(), 1U);
    EXPECT_EQ(shown(note.at("contentVersion")), "3");

    // A tag that is not there stops the whole edit.
    EXPECT_EQ(
        run({"note", "edit", id, "--title", "Newer", "--remove-tag", "zzz"}).status,
        ExitStatus::failed);
    EXPECT_EQ(shown(mustRun({"note", "show", id, "--json"}).json().at("title")), "New");
    EXPECT_EQ(run({"note", "edit", id}).status, ExitStatus::usage);
}

TEST_F(NoteCommands, TheEditorGetsTheBodyAndLosesNobodysWork) {
    const std::string id = addNote("Plan", {"--text", "old"});
    isTerminal_ = true;
    std::string opened;
    runProgram_ = [&](const std::vector<std::string>& words) {
        opened = test::contentOf(words.back());
        test::putContent(words.back(), "*mine*");
        isTerminal_ = false;
        mustRun({"note", "edit", id, "--text", "theirs"});
        isTerminal_ = true;
        return 0;
    };
    mustRun({"note", "edit", "Plan"});
    isTerminal_ = false;
    EXPECT_EQ(opened, "old\n");
    const auto note = mustRun({"note", "show", id, "--json"}).json();
    EXPECT_EQ(shown(note.at("html")), "<p><em>mine</em></p>");
    EXPECT_EQ(shown(note.at("hasConflict")), "true");
    EXPECT_EQ(mustRun({"note", "revision", id, "1", "--html"}).output, "<p>theirs</p>\n");
    EXPECT_EQ(
        shown(mustRun({"note", "revert", id, "1", "--json"}).json().at("hasConflict")), "false");
    EXPECT_EQ(mustRun({"note", "show", id, "--html"}).output, "<p>theirs</p>\n");
}

TEST_F(NoteCommands, OutlineIsTheHeadings) {
    const auto body = folder_ / "body.md";
    test::putContent(body, "# One\n\ntext\n\n### Two *three*\n\n# Four\n");
    const std::string id = addNote("Plan", {"--markdown", body.string()});
    EXPECT_EQ(mustRun({"note", "show", id, "--outline"}).output, "One\n    Two three\nFour\n");
}

TEST_F(NoteCommands, TheEditorGetsHTMLWhereMarkdownWouldLoseSomething) {
    const auto body = folder_ / "body.html";
    test::putContent(body, "in no paragraph");
    const std::string id = addNote("Plan", {"--html", body.string()});
    EXPECT_EQ(mustRun({"note", "show", id, "--markdown"}).output, "in no paragraph\n");
    isTerminal_ = true;
    runProgram_ = [&](const std::vector<std::string>& words) {
        EXPECT_EQ(test::contentOf(words.back()), "in no paragraph");
        test::putContent(words.back(), "in *no* paragraph");
        return 0;
    };
    const std::string remark = "Markdown cannot hold all of this note, so it opens as HTML.";
    EXPECT_NE(mustRun({"note", "edit", id}).error.find(remark), std::string::npos);
    isTerminal_ = false;
    EXPECT_EQ(mustRun({"note", "show", id, "--html"}).output, "in *no* paragraph\n");
}

TEST_F(NoteCommands, AnEditorThatFailsChangesNothingAndKeepsTheFile) {
    const std::string id = addNote("Plan", {"--text", "old"});
    isTerminal_ = true;
    std::string file;
    runProgram_ = [&](const std::vector<std::string>& words) {
        file = words.back();
        test::putContent(file, "<p>mine</p>");
        return 1;
    };
    EXPECT_EQ(run({"note", "edit", "Plan"}).status, ExitStatus::failed);
    EXPECT_EQ(test::contentOf(file), "<p>mine</p>");
    isTerminal_ = false;
    EXPECT_EQ(mustRun({"note", "show", id, "--html"}).output, "<p>old</p>\n");
    std::filesystem::remove(file);
}

TEST_F(NoteCommands, EveryRevertCanBeReverted) {
    const std::string id = addNote("Plan", {"--text", "one"});
    for (const char* text : {"two", "three"}) {
        clock_.advance(Instant::Duration(400));
        mustRun({"note", "edit", id, "--text", text});
    }
    clock_.advance(Instant::Duration(10));  // too soon for another copy by itself
    mustRun({"note", "revert", id, "2"});
    EXPECT_EQ(mustRun({"note", "show", id, "--text"}).output, "one\n");
    mustRun({"note", "revert", id, "1"});
    EXPECT_EQ(mustRun({"note", "show", id, "--text"}).output, "three\n");
    EXPECT_EQ(run({"note", "revert", id, "99"}).error, "The revision “99” could not be found.\n");
}

TEST_F(NoteCommands, RemindersAreReadInTheZoneOfTheRun) {
    addNote("Plan");
    struct Case {
        const char* when;
        const char* zone;
        const char* instant;
    };
    for (const auto& [when, zone, instant] : {
             Case{"2026-07-01 09:15", "Europe/Berlin", "2026-07-01T07:15:00.000Z"},
             Case{"2026-07-01T09:15", "UTC", "2026-07-01T09:15:00.000Z"},
             Case{"2026-07-01T09:15:00+02:00", "UTC", "2026-07-01T07:15:00.000Z"},
         }) {
        SCOPED_TRACE(when);
        const auto result =
            mustRun({"note", "remind", "Plan", when, "--time-zone", zone, "--json"});
        EXPECT_EQ(shown(result.json().at("reminderAt")), instant);
    }
    EXPECT_EQ(
        shown(mustRun({"note", "remind", "Plan", "none", "--json"}).json().at("reminderAt")),
        "null");
    EXPECT_EQ(run({"note", "remind", "Plan", "2026-02-30 09:15"}).status, ExitStatus::usage);
    EXPECT_EQ(
        run({"note", "list", "--time-zone", "Mars/Base"}).error,
        "--time-zone takes a time zone such as Europe/Berlin.\n");
}

TEST_F(NoteCommands, ACopyKeepsItsPictureWhenTheOriginalGoes) {
    const auto picture = folder_ / "dot.gif";
    test::putContent(picture, std::string("GIF89a\x01\x00\x01\x00\x00\x00\x00;", 14));
    const std::string id = addNote("Plan");
    const auto attached = mustRun({"note", "attach", id, picture.string(), "--json"}).json();
    EXPECT_EQ(shown(attached.at(0).at("mimeType")), "image/gif");
    const std::string copy = mustRun({"note", "duplicate", id}).line();
    mustRun({"note", "trash", id});
    mustRun({"trash", "empty"});

    const auto left = mustRun({"note", "attachments", copy, "--json"}).json();
    ASSERT_EQ(left.as_array().size(), 1U);
    const std::string attachment(left.at(0).at("id").as_string());
    EXPECT_NE(mustRun({"note", "show", copy, "--html"}).output.find(attachment), std::string::npos);
    mustRun({"attachment", "save", attachment, (folder_ / "out.gif").string()});
    EXPECT_EQ(test::contentOf(folder_ / "out.gif"), test::contentOf(picture));
    EXPECT_EQ(
        run({"attachment", "save", attachment, (folder_ / "out.gif").string()}).status,
        ExitStatus::failed);

    mustRun({"attachment", "delete", attachment});
    EXPECT_EQ(mustRun({"note", "show", copy, "--html"}).output.find("img"), std::string::npos);
}

TEST_F(NoteCommands, OneFileThatCannotBeAttachedStopsAll) {
    const auto good = folder_ / "a.txt";
    const auto empty = folder_ / "b.txt";
    test::putContent(good, "text");
    test::putContent(empty, "");
    const std::string id = addNote("Plan");
    EXPECT_EQ(
        run({"note", "attach", id, good.string(), empty.string()}).error,
        "b.txt is empty, so there was nothing to attach.\n");
    EXPECT_EQ(mustRun({"note", "attachments", id, "--json"}).json().as_array().size(), 0U);
}

}  // namespace
}  // namespace tesserine::cli
