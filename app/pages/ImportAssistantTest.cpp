#include "app/pages/ImportAssistant.h"

#include "app/pages/ExportAssistant.h"
#include "app/pages/ImportWords.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

std::string labelText(const QDialog& dialog, const char* label) {
    return dialog.findChild<QLabel*>(label)->text().toStdString();
}

void press(const QDialog& dialog, const char* title) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>()) {
        if (button->text() == title && button->isVisible()) return button->click();
    }
    ADD_FAILURE() << "no button “" << title << "”";
}

class ImportAssistantTest : public test::WindowFixture {
public:
    ImportAssistantTest() {
        std::filesystem::create_directories(folder / "Notes" / "Work");
        test::putContent(folder / "Notes" / "Plan.md", "# Plan\n\nSee [[Work]]\n");
        test::putContent(folder / "Notes" / "Work" / "Work.md", "text\n");
        assistant.show();
    }
    ~ImportAssistantTest() override { environment->waitForBackground(); }

    bool says(const char* label, const std::string& expected) {
        return waitUntil([&] { return labelText(assistant, label) == expected; });
    }
    std::string titles() {
        std::string all;
        for (const CDNote* note :
             context().fetch<CDNote>({.predicate = {"trashedAt == nil"}, .sort = {{"title"}}})) {
            all += *note->title + (note->notebook ? " in " + *note->notebook->name : "") + "\n";
        }
        return all;
    }

    ImportAssistant assistant{*environment};
};

TEST_F(ImportAssistantTest, LooksFirstImportsWhenAskedAndUndoes) {
    ASSERT_TRUE(assistant.begin({folder / "Notes"}));
    ASSERT_TRUE(says("importContent", "2 notes in 2 notebooks."))
        << labelText(assistant, "importContent");
    EXPECT_EQ(titles(), "") << "nothing is changed by looking";

    assistant.findChild<QLineEdit*>("importNotebook")->setText("Old / Notes");
    press(assistant, "Import");
    ASSERT_TRUE(waitUntil([&] { return !labelText(assistant, "importOutcome").empty(); }));
    EXPECT_TRUE(qobject_cast<QPushButton*>(assistant.focusWidget())->text() == "Done");
    EXPECT_TRUE(labelText(assistant, "importOutcome").starts_with("2 notes were imported"))
        << labelText(assistant, "importOutcome");
    EXPECT_EQ(titles(), "Plan in Notes\nWork in Work\n");

    press(assistant, "Undo Import");
    press(assistant, "Done");
    assistant.close();
    EXPECT_TRUE(assistant.isVisible()) << "or a half of it would be undone";
    EXPECT_TRUE(says("importOutcome", "The import was undone: 2 notes are in the trash."));
    press(assistant, "Done");
    EXPECT_FALSE(assistant.isVisible());
    context().reset();
    EXPECT_EQ(titles(), "");
}

TEST_F(ImportAssistantTest, SaysWhyNothingCanBeImported) {
    EXPECT_FALSE(assistant.begin({folder / "picture.png"}));
    ASSERT_TRUE(assistant.begin({folder / "gone.md"}));
    ASSERT_TRUE(waitUntil([&] { return labelText(assistant, "importContent") != "Looking…"; }));
    const auto buttons = assistant.findChildren<QPushButton*>();
    const auto import = std::ranges::find_if(
        buttons, [](const QPushButton* button) { return button->text() == "Import"; });
    ASSERT_NE(import, buttons.end());
    EXPECT_FALSE((*import)->isEnabled());
}

TEST_F(ImportAssistantTest, OffersTasksWhereTheSourceHasSome) {
    const auto* const tasks = assistant.findChild<QCheckBox*>("importTasks");
    ASSERT_TRUE(assistant.begin({folder / "Notes"}));
    EXPECT_TRUE(tasks->isHidden());
    ASSERT_TRUE(assistant.begin({folder / "Recipes.enex"}));
    EXPECT_FALSE(tasks->isHidden());
}

TEST_F(ImportAssistantTest, ImportsFromWhatAFileOrFolderIs) {
    const std::filesystem::path exported = folder / "Exported";
    std::filesystem::create_directory(exported);
    test::putContent(exported / "manifest.json", "{}");
    const std::filesystem::path copied = folder / "group.notes";
    std::filesystem::create_directory(copied);
    test::putContent(copied / "NoteStore.sqlite", "");
    const auto sources = importSources(*environment);
    struct Case {
        std::filesystem::path path;
        const char* title;
    };
    for (const auto& [path, title] : {
             Case{folder / "Notes", "A folder of Markdown"},
             Case{exported, "An exported library"},
             Case{copied, "Apple Notes"},
             Case{copied / "NoteStore.sqlite", "Apple Notes"},
             Case{"Recipes.ENEX", "Evernote export files"},
             Case{"a.b.md", "Markdown or text files"},
             Case{"picture.png", "none"},
             Case{"enex", "none"},
         }) {
        const ImportSource* const source = sourceFor(sources, path);
        EXPECT_EQ(source ? source->title : "none", title) << path;
    }
}

TEST_F(ImportAssistantTest, ADamagedSourceIsASentenceAndTheNextOneIsLookedAt) {
    const std::filesystem::path exported = folder / "Exported";
    std::filesystem::create_directory(exported);
    test::putContent(exported / "manifest.json", "{ no manifest");
    ASSERT_TRUE(assistant.begin({exported}));
    ASSERT_TRUE(waitUntil([&] { return labelText(assistant, "importContent") != "Looking…"; }));
    EXPECT_FALSE(labelText(assistant, "importContent").empty());
    ASSERT_TRUE(assistant.begin({folder / "Notes"}));
    EXPECT_TRUE(says("importContent", "2 notes in 2 notebooks."));
}

TEST_F(ImportAssistantTest, WhatIsPickedWhileALookEndsIsLookedAtNext) {
    ASSERT_TRUE(assistant.begin({folder / "gone.md"}));
    press(assistant, "Back");
    ASSERT_TRUE(assistant.begin({folder / "Notes"})) << "the first look has not ended yet";
    EXPECT_TRUE(says("importContent", "2 notes in 2 notebooks."))
        << labelText(assistant, "importContent");
}

TEST(ImportWords, SayWhatWillComeInAndWhatDid) {
    ImportPreview preview{.found = 1};
    EXPECT_EQ(importing::sentence(preview).toStdString(), "1 note.");
    preview = {
        .found = 12,
        .duplicates = 1,
        .unreadable = 2,
        .attachments = 1,
        .attachmentBytes = 2048,
        .notebooks = {"A", "B"}};
    EXPECT_EQ(
        importing::sentence(preview).toStdString(),
        "12 notes and 1 file (2.0 kB) in 2 notebooks. 1 is in the library already. 2 cannot be "
        "read.");

    ImportReport report{.finished = Instant{}};
    report.add({.title = "Good", .outcome = ImportOutcome::imported});
    report.add({.title = "Bad", .outcome = ImportOutcome::failed});
    report.add({.title = "Odd", .outcome = ImportOutcome::skipped, .warnings = {"No date."}});
    EXPECT_EQ(
        importing::sentence(report).toStdString(), "1 note was imported, 1 skipped, 1 failed.");
    EXPECT_EQ(
        importing::troubles(report).join('\n').toStdString(),
        "“Bad”: could not be read.\n“Odd”: No date.");
    report.finished.reset();
    EXPECT_TRUE(importing::sentence(report).contains("stopped before its end"));
}

using ExportAssistantTest = test::WindowFixture;

TEST_F(ExportAssistantTest, WritesAFolderAndSaysWhatIsInIt) {
    addNote("Plan");
    addTask("Call Ann");
    ExportAssistant assistant(*environment, QString::fromStdString(folder.path().string()));
    assistant.show();
    press(assistant, "Export");
    ASSERT_TRUE(waitUntil([&] { return !labelText(assistant, "exportOutcome").empty(); }));
    const std::string outcome = labelText(assistant, "exportOutcome");
    EXPECT_TRUE(outcome.starts_with("1 note, 0 files (0 bytes) and 1 task are in\n")) << outcome;
    const std::filesystem::path written = outcome.substr(outcome.find('\n') + 1);
    EXPECT_TRUE(std::filesystem::exists(written / "manifest.json")) << written;
}

TEST_F(ExportAssistantTest, AFolderThatIsNotThereIsASentence) {
    ExportAssistant assistant(
        *environment, QString::fromStdString((setting().library / "inside").string()));
    assistant.show();
    press(assistant, "Export");
    ASSERT_TRUE(waitUntil([&] { return !labelText(assistant, "exportOutcome").empty(); }));
    EXPECT_TRUE(QString::fromStdString(labelText(assistant, "exportOutcome")).endsWith('.'));
    EXPECT_FALSE(std::filesystem::exists(setting().library / "inside"));

    press(assistant, "Back");
    assistant.findChild<QLineEdit*>("exportFolder")
        ->setText(QString::fromStdString(folder.path().string()));
    press(assistant, "Export");
    EXPECT_TRUE(waitUntil([&] {
        return labelText(assistant, "exportOutcome").starts_with("0 notes, 0 files");
    })) << labelText(assistant, "exportOutcome");
}

TEST_F(ExportAssistantTest, AFolderWithoutItsBeginningLiesInTheUsersOwn) {
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", QByteArray::fromStdString(folder.path().string()));
    for (const char* typed : {"~/Copies", "Copies", " Copies "}) {
        ExportAssistant assistant(*environment, "");
        assistant.show();
        EXPECT_FALSE(assistant.findChild<QPushButton*>("export")->isEnabled());
        assistant.findChild<QLineEdit*>("exportFolder")->setText(typed);
        press(assistant, "Export");
        ASSERT_TRUE(waitUntil([&] { return !labelText(assistant, "exportOutcome").empty(); }));
        EXPECT_NE(
            labelText(assistant, "exportOutcome").find((folder / "Copies/").string()),
            std::string::npos)
            << labelText(assistant, "exportOutcome");
    }
    qputenv("HOME", home);
}

}  // namespace
}  // namespace tesserine::app
