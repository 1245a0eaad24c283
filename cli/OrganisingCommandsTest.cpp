#include "cli/CommandFixture.h"

namespace tesserine::cli {
namespace {

class OrganisingCommands : public CommandFixture {};

TEST_F(OrganisingCommands, NotebooksAreATree) {
    const std::string work = mustRun({"notebook", "add", "Work"}).line();
    mustRun({"notebook", "add", "Plans", "--parent", "Work", "--color", "#3366cc"});
    addNote("a", {"--notebook", "work/plans"});
    EXPECT_EQ(mustRun({"notebook", "add", " work "}).line(), work);

    const auto listed = mustRun({"notebook", "list", "--json"}).json();
    ASSERT_EQ(listed.as_array().size(), 2U);
    EXPECT_EQ(shown(listed.at(1).at("path")), "Work / Plans");
    EXPECT_EQ(shown(listed.at(1).at("noteCount")), "1");
    EXPECT_EQ(shown(listed.at(1).at("parent")), work);
    EXPECT_EQ(shown(listed.at(1).at("colorHex")), "#3366CC");

    EXPECT_EQ(
        run({"notebook", "move", "Work", "Plans"}).error,
        "“Work” cannot be moved into itself or below itself.\n");
    mustRun({"notebook", "move", "Work / Plans", "none"});
    mustRun({"notebook", "favorite", "Plans"});
    const std::string text = mustRun({"notebook", "list"}).output;
    EXPECT_NE(text.find("1  Plans  favourite\n"), std::string::npos) << text;

    EXPECT_EQ(
        run({"notebook", "rename", "Plans", "WORK"}).error,
        "A notebook called “WORK” already exists here.\n");
    mustRun({"notebook", "delete", "Plans"});
    EXPECT_EQ(shown(mustRun({"note", "show", "a", "--json"}).json().at("notebook")), "null");
}

TEST_F(OrganisingCommands, NewNotesStartFromTheTemplateOfTheirNotebook) {
    mustRun({"template", "seed"});
    mustRun({"notebook", "add", "Meetings"});
    mustRun({"notebook", "template", "Meetings", "Meeting Notes"});
    const std::string id = addNote("Monday", {"--notebook", "Meetings"});
    const auto note = mustRun({"note", "show", id, "--json"}).json();
    EXPECT_EQ(shown(note.at("title")), "Monday");
    EXPECT_TRUE(shown(note.at("html")).starts_with("<h2>Attendees</h2>"));
    EXPECT_EQ(shown(note.at("contentVersion")), "1");
    EXPECT_EQ(shown(note.at("isTemplate")), "false");

    const std::string used =
        mustRun({"template", "use", "Meeting Notes", "--title", "Tuesday"}).line();
    EXPECT_EQ(shown(mustRun({"note", "show", used, "--json"}).json().at("title")), "Tuesday");
    EXPECT_EQ(
        run({"template", "use", "Monday"}).error, "The template “Monday” could not be found.\n");
    EXPECT_EQ(shown(mustRun({"template", "seed", "--json"}).json().at("inserted")), "0");
}

TEST_F(OrganisingCommands, ARenamedTagMergesIntoTheOneOfThatName) {
    addNote("a", {"--tag", "Work"});
    addNote("b", {"--tag", "todo"});
    EXPECT_EQ(mustRun({"tag", "rename", "todo", "WORK"}).output, "Merged into “Work”.\n");
    const auto tags = mustRun({"tag", "list", "--json"}).json();
    ASSERT_EQ(tags.as_array().size(), 1U);
    EXPECT_EQ(shown(tags.at(0).at("noteCount")), "2");
    EXPECT_EQ(mustRun({"note", "list", "--tag", "work", "--json"}).json().as_array().size(), 2U);

    mustRun({"tag", "add", "unused"});
    mustRun({"tag", "move", "unused", "Work"});
    EXPECT_EQ(run({"tag", "move", "Work", "unused"}).status, ExitStatus::failed);
    EXPECT_EQ(mustRun({"tag", "prune"}).output, "Deleted 1 unused tag.\n");
    EXPECT_EQ(run({"tag", "add", "  "}).error, "A tag needs a name.\n");
    mustRun({"tag", "delete", "Work"});
    EXPECT_EQ(mustRun({"note", "list", "--json"}).json().as_array().size(), 2U);
}

TEST_F(OrganisingCommands, SavedSearchesKeepTheirOrderAndAreNotDoubled) {
    mustRun({"saved-search", "add", "One", "tag:a"});
    mustRun({"saved-search", "add", "Two", "tag:b"});
    EXPECT_EQ(run({"saved-search", "add", "one", "tag:c"}).status, ExitStatus::failed);
    mustRun({"saved-search", "add", "one", "tag:c", "--replace"});
    mustRun({"saved-search", "reorder", "Two", "One"});
    const auto listed = mustRun({"saved-search", "list", "--json"}).json();
    ASSERT_EQ(listed.as_array().size(), 2U);
    EXPECT_EQ(shown(listed.at(0).at("name")), "Two");
    EXPECT_EQ(shown(listed.at(1).at("query")), "tag:c");
    mustRun({"saved-search", "rename", "Two", "Second"});
    mustRun({"saved-search", "query", "Second", "is:pinned"});
    mustRun({"saved-search", "delete", "One"});
    EXPECT_NE(
        mustRun({"saved-search", "list"}).output.find("Second  is:pinned\n"), std::string::npos);
}

TEST_F(OrganisingCommands, TheTrashIsPurgedByAgeAfterABackup) {
    addNote("old");
    addNote("new");
    mustRun({"note", "trash", "old"});
    clock_.advance(Instant::Duration(10.0 * 86'400));
    mustRun({"note", "trash", "new"});
    EXPECT_EQ(run({"trash", "purge"}).status, ExitStatus::usage);
    EXPECT_EQ(mustRun({"trash", "purge", "--days", "10"}).output, "Deleted 0 notes for good.\n");
    clock_.advance(Instant::Duration(1));
    EXPECT_EQ(mustRun({"trash", "purge", "--days", "10"}).output, "Deleted 1 note for good.\n");

    const auto backups = mustRun({"backup", "list", "--json"}).json();
    ASSERT_FALSE(backups.as_array().empty());
    EXPECT_EQ(shown(backups.at(0).at("reason")), "purge");
    mustRun({"restore", std::string(backups.at(0).at("folder").as_string())});
    EXPECT_EQ(mustRun({"note", "list", "--trash", "--json"}).json().as_array().size(), 2U);
}

}  // namespace
}  // namespace tesserine::cli
