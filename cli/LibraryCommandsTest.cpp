#include "cli/CommandFixture.h"
#include "cli/Session.h"

#include <sstream>

namespace tesserine::cli {
namespace {

class LibraryCommands : public CommandFixture {};

TEST_F(LibraryCommands, ReadingDoesNotMakeALibraryAndWritingDoes) {
    for (const std::vector<std::string>& line : {
             std::vector<std::string>{"note", "list"},
             {"overview"},
             {"info"},
             {"dump"},
             {"check"},
             {"backup"},
             {},
         }) {
        SCOPED_TRACE(testing::PrintToString(line));
        const CommandResult result = run(line);
        EXPECT_EQ(result.status, ExitStatus::noLibrary);
        EXPECT_EQ(
            result.error,
            "There is no library in “" + library().string() + "”; “tesserine init” makes one.\n");
    }
    EXPECT_FALSE(std::filesystem::exists(library()));

    const CommandResult made = mustRun({"init"});
    EXPECT_EQ(made.output, library().string() + "\n");
    EXPECT_EQ(made.error, "Made a library in “" + library().string() + "”.\n");
    EXPECT_EQ(shown(mustRun({"init", "--json"}).json().at("created")), "false");
    EXPECT_EQ(mustRun({"note", "list", "--json"}).output, "[]\n");
}

TEST_F(LibraryCommands, FoldersThatAreNoPlaceForALibraryAreRefused) {
    test::putContent(folder_ / "file", "x");
    std::filesystem::create_symlink("/", folder_ / "root");
    struct Case {
        std::string folder;
        std::string reason;
    };
    for (const auto& [folder, reason] : {
             Case{"/", "is the root of the file system, not a library"},
             Case{(folder_ / "root").string(), "is the root of the file system, not a library"},
             Case{(folder_ / "file").string(), "is not a folder"},
         }) {
        SCOPED_TRACE(folder);
        const CommandResult result = run({"note", "add", "--library", folder});
        EXPECT_EQ(result.status, ExitStatus::noLibrary);
        EXPECT_NE(result.error.find(reason), std::string::npos) << result.error;
    }
    // A link to a folder means that folder.
    mustRun({"init"});
    std::filesystem::create_directory_symlink(library(), folder_ / "link");
    EXPECT_EQ(
        mustRun({"init", "--library", (folder_ / "link/").string()}).line(), library().string());
}

TEST_F(LibraryCommands, ADamagedOrNewerFileIsRefusedAndStaysAsItIs) {
    std::filesystem::create_directory(library());
    for (const std::string& content :
         {std::string(), std::string("not a database at all, but text")}) {
        test::putContent(library() / "Tesserine.sqlite", content);
        const CommandResult result = run({"note", "add", "--title", "x"});
        EXPECT_EQ(result.status, ExitStatus::noLibrary) << result.error;
        EXPECT_TRUE(result.error.starts_with("Tesserine could not open its library. "))
            << result.error;
        EXPECT_EQ(test::contentOf(library() / "Tesserine.sqlite"), content);
    }
}

TEST_F(LibraryCommands, TheOverviewShowsWhatMatters) {
    const std::string pinned = addNote("Pinned one");
    mustRun({"note", "pin", pinned});
    const std::string due = addNote("Due one");
    mustRun({"note", "remind", due, "2026-03-15 10:00"});
    mustRun({"note", "remind", addNote("Past one"), "2026-03-13 10:00"});
    const std::string text = mustRun({"overview"}).output;
    const auto section = [](const std::string& title, const std::string& id, const char* rest) {
        return title + "\n" + id.substr(0, 8) + "  " + rest;
    };
    EXPECT_NE(
        text.find(section("Pinned", pinned, "2026-03-14 09:15  Pinned one\n\n")), std::string::npos)
        << text;
    EXPECT_NE(
        text.find(section("Reminders", due, "2026-03-15 10:00  Due one\n\n")), std::string::npos)
        << text;
    EXPECT_TRUE(text.ends_with("3 notes.\n"));
    EXPECT_EQ(mustRun({}).output, text);  // without a display
}

TEST_F(LibraryCommands, InfoCountsAndNamesPaths) {
    addNote("a", {"--tag", "x"});
    const auto info = mustRun({"info", "--json"}).json();
    EXPECT_EQ(shown(info.at("library")), library().string());
    EXPECT_EQ(shown(info.at("counts").at("CDNote")), "1");
    EXPECT_EQ(shown(info.at("counts").at("CDTag")), "1");
    EXPECT_EQ(
        shown(info.at("preferences")), (folder_ / "config/Tesserine/preferences.json").string());
    EXPECT_NE(mustRun({"info"}).output.find("CDTag"), std::string::npos);
}

TEST_F(LibraryCommands, DumpWritesEveryObjectOnALineOfItsOwn) {
    const std::string big(150'000, 'x');
    test::putContent(folder_ / "big.txt", big);
    const std::string id = addNote("a", {"--tag", "x", "--notebook", "Work", "--text", "body"});
    mustRun({"note", "attach", id, (folder_ / "big.txt").string()});

    std::istringstream lines(mustRun({"dump"}).output);
    std::map<std::string, boost::json::object> objects;
    for (std::string line; std::getline(lines, line);) {
        auto object = tesserine::json::parse(line).as_object();
        objects[std::string(object.at("entity").as_string())] = object;
    }
    ASSERT_EQ(objects.size(), 5U);
    const auto& note = objects["CDNote"];
    EXPECT_EQ(shown(note.at("id")), id);
    EXPECT_EQ(shown(note.at("notebook")), shown(objects["CDNotebook"].at("id")));
    EXPECT_EQ(shown(note.at("tags").as_array().at(0)), shown(objects["CDTag"].at("id")));
    EXPECT_EQ(
        shown(note.at("revisions").as_array().at(0)), shown(objects["CDNoteRevision"].at("id")));
    EXPECT_EQ(shown(note.at("originalSource")), "null");
    const auto& attachment = objects["CDAttachment"];
    EXPECT_EQ(shown(attachment.at("note")), id);
    EXPECT_EQ(shown(attachment.at("fileData").at("bytes")), "150000");
    EXPECT_EQ(shown(attachment.at("fileData").at("sha256")), shown(attachment.at("sha256")));

    EXPECT_EQ(run({"dump", "--entity", "CDThing"}).status, ExitStatus::usage);
    const std::string tags = mustRun({"dump", "--entity", "CDTag"}).output;
    EXPECT_EQ(std::ranges::count(tags, '\n'), 1);
}

TEST_F(LibraryCommands, DumpWritesAnyNumberOfObjectsByTheirIDs) {
    std::string operations;
    for (int i = 0; i < 1'050; ++i) {
        operations += R"({"op": "note.add", "title": "n", "tags": ["t", "u"]})"
                      "\n";
    }
    mustRun({"batch"}, operations);
    std::istringstream lines(mustRun({"dump", "--entity", "CDNote"}).output);
    std::vector<std::string> ids;
    for (std::string line; std::getline(lines, line);) {
        const auto note = tesserine::json::parse(line);
        ids.push_back(shown(note.at("id")));
        EXPECT_LT(shown(note.at("tags").at(0)), shown(note.at("tags").at(1)));
    }
    EXPECT_EQ(ids.size(), 1'050U);
    EXPECT_TRUE(std::ranges::is_sorted(ids));
}

TEST_F(LibraryCommands, ASharedDumpLeavesOutWhatStaysOnTheDevice) {
    mustRun({"note", "edit", addNote("a", {"--text", "one"}), "--text", "two"});
    const std::string line = mustRun({"dump", "--shared"}).output;
    EXPECT_EQ(std::ranges::count(line, '\n'), 1) << line;
    const auto note = tesserine::json::parse(line).as_object();
    for (const char* name : {"revisions", "hasConflict", "originalSource"}) {
        EXPECT_FALSE(note.contains(name)) << name;
    }
    EXPECT_EQ(shown(note.at("plainText")), "two");
    EXPECT_EQ(mustRun({"dump", "--shared", "--entity", "CDNoteRevision"}).output, "");
}

TEST_F(LibraryCommands, SettingsAreTypedAndUnknownOnesRefused) {
    struct Case {
        std::vector<std::string> line;
        ExitStatus status;
        std::string output;
        std::string error;
    };
    const std::string days = "tesserine.trashRetentionDays";
    for (const auto& [line, status, output, error] : {
             Case{{"get", days}, ExitStatus::done, "(0)\n", ""},
             Case{{"set", days, "30"}, ExitStatus::done, "30\n", ""},
             Case{{"get", "trashRetentionDays"}, ExitStatus::done, "30\n", ""},
             Case{
                 {"set", days, "7.5"},
                 ExitStatus::failed,
                 "",
                 "“" + days + "” takes a whole number from 0 to 36499.\n"},
             Case{
                 {"set", days, "1000000000000000000"},
                 ExitStatus::failed,
                 "",
                 "“" + days + "” takes a whole number from 0 to 36499.\n"},
             Case{
                 {"set", "tesserine.nonsense", "1"},
                 ExitStatus::failed,
                 "",
                 "There is no setting “tesserine.nonsense”; “tesserine settings list” shows them "
                 "all.\n"},
             Case{{"reset", days}, ExitStatus::done, "(0)\n", ""},
         }) {
        SCOPED_TRACE(testing::PrintToString(line));
        std::vector<std::string> whole{"settings"};
        whole.insert(whole.end(), line.begin(), line.end());
        const CommandResult result = run(whole);
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.output, output);
        EXPECT_EQ(result.error, error);
    }
    mustRun({"settings", "set", days, "7"});
    EXPECT_EQ(shown(mustRun({"settings", "get", days, "--json"}).json().at("value")), "7");
    EXPECT_FALSE(std::filesystem::exists(library()));
}

TEST_F(LibraryCommands, OneBackupADayIsMadeByItself) {
    addNote("a");
    addNote("b");
    EXPECT_EQ(mustRun({"backup", "list", "--json"}).json().as_array().size(), 1U);
    addNote("c");
    EXPECT_EQ(mustRun({"backup", "list", "--json"}).json().as_array().size(), 1U);
    clock_.advance(Instant::Duration(25.0 * 3600));
    addNote("d");
    const auto backups = mustRun({"backup", "list", "--json"}).json();
    EXPECT_EQ(backups.as_array().size(), 2U);
    EXPECT_EQ(shown(backups.at(0).at("reason")), "daily");
}

TEST_F(LibraryCommands, ABackupCanTakeTheLibrarysPlace) {
    addNote("before");
    const auto target = folder_ / "copy";
    EXPECT_EQ(mustRun({"backup", "--to", target.string()}).line(), target.string());
    EXPECT_EQ(run({"backup", "--to", target.string()}).status, ExitStatus::failed);
    addNote("after");
    mustRun({"restore", target.string()});
    const auto notes = mustRun({"note", "list", "--json"}).json();
    ASSERT_EQ(notes.as_array().size(), 1U);
    EXPECT_EQ(shown(notes.at(0).at("title")), "before");
    EXPECT_EQ(run({"restore", (folder_ / "nothing").string()}).status, ExitStatus::failed);
    EXPECT_TRUE(mustRun({"check"}).output.ends_with("Everything is in order.\n"));
}

TEST_F(LibraryCommands, WordsOfANoteReachNeitherLogNorPreferences) {
    const std::string secret = "xyzzy-private-words";
    const std::string id =
        addNote(secret, {"--text", secret, "--tag", secret, "--notebook", secret});
    mustRun({"settings", "set", "trashRetentionDays", "30"});
    run({"note", "show", secret + "x"});
    run({"note", "edit", id, "--remove-tag", secret + "y"});
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
        if (!entry.is_regular_file() || entry.path().string().starts_with(library().string())) {
            continue;
        }
        ++files;
        EXPECT_EQ(test::contentOf(entry.path()).find(secret), std::string::npos) << entry.path();
    }
    EXPECT_GT(files, 0U);
}

}  // namespace
}  // namespace tesserine::cli
