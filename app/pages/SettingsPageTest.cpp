#include "app/pages/SettingsPage.h"

#include "app/look/SettingsForm.h"
#include "app/pages/ImportSources.h"
#include "app/state/WindowFixture.h"
#include "core/store/LibraryBackup.h"
#include "search/SearchSynonyms.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

class SettingsPageTest : public test::WindowFixture {
public:
    SettingsPageTest() {
        QObject::connect(&page, &SettingsPage::changed, &page, [this](const QString& key) {
            changed.push_back(key.toStdString());
        });
    }
    ~SettingsPageTest() override { environment->waitForBackground(); }

    /// The page with one of its areas shown.
    SettingsPage& at(const char* area) {
        page.showPage(area);
        return page;
    }
    void choose(const char* key, int index) {
        auto& box = *page.findChild<QComboBox*>(key);
        box.setCurrentIndex(index);
        emit box.activated(index);
    }
    void press(const char* title) { press(page, title); }
    static void press(SettingsPage& shown, const char* title) {
        for (QPushButton* button : shown.findChildren<QPushButton*>()) {
            if (button->text() == title) button->click();
        }
    }
    std::string text(const char* label) {
        return page.findChild<QLabel*>(label)->text().toStdString();
    }

    SettingsPage page{*environment};
    std::vector<std::string> changed;
};

TEST_F(SettingsPageTest, AFileWithSeveralNamesTakesItsRoomOnce) {
    const std::filesystem::path file = setting().library / "one";
    test::putContent(file, {});
    std::filesystem::resize_file(file, 40'000'000);
    std::filesystem::create_hard_link(file, setting().library / "other");
    SettingsPage shown(*environment);
    shown.showPage("storage");
    const auto* const size = shown.findChild<QLabel*>("librarySize");
    ASSERT_TRUE(waitUntil([&] { return !size->text().isEmpty(); }));
    EXPECT_TRUE(size->text().startsWith("4")) << size->text().toStdString();
    EXPECT_TRUE(size->text().endsWith(" MB without its backups.")) << size->text().toStdString();
}

TEST_F(SettingsPageTest, WhatIsChangedIsKeptAndToldAtOnce) {
    Preferences& preferences = environment->preferences();
    choose("tesserine.appearance", 2);
    EXPECT_EQ(preferences.string("tesserine.appearance"), "dark");
    at("storage");
    choose("tesserine.trashRetentionDays", 2);
    EXPECT_EQ(preferences.integer("tesserine.trashRetentionDays"), 30);
    choose("tesserine.trashRetentionDays", 0);
    EXPECT_FALSE(preferences.integer("tesserine.trashRetentionDays")) << "for ever is not a number";
    page.findChild<QCheckBox*>("tesserine.reduceMotion")->click();
    EXPECT_EQ(preferences.boolean("tesserine.reduceMotion"), true);
    EXPECT_EQ(
        changed,
        (std::vector<std::string>{
            "tesserine.appearance",
            "tesserine.trashRetentionDays",
            "tesserine.trashRetentionDays",
            "tesserine.reduceMotion"}));
    EXPECT_FALSE(page.findChild<QCheckBox*>("tesserine.menuBarOnly")) << "this desktop has no tray";

    const SettingsPage later(*environment);
    EXPECT_EQ(later.findChild<QComboBox*>("tesserine.appearance")->currentText(), "Dark");
    EXPECT_TRUE(later.findChild<QCheckBox*>("tesserine.reduceMotion")->isChecked());
    environment->waitForBackground();
}

TEST_F(SettingsPageTest, WhatCannotBeKeptIsShownAsItIs) {
    choose("tesserine.appearance", 2);
    std::filesystem::path lock = setting().preferencesFile;
    lock += ".lock";
    std::filesystem::remove(lock);
    std::filesystem::create_directory(lock);  // nothing can be written any more
    choose("tesserine.appearance", 1);
    EXPECT_EQ(page.findChild<QComboBox*>("tesserine.appearance")->currentText(), "Dark");
    auto& motion = *page.findChild<QCheckBox*>("tesserine.reduceMotion");
    motion.click();
    EXPECT_FALSE(motion.isChecked());
    EXPECT_NE(page.findChild<QMessageBox*>("notice"), nullptr) << "it says why";
    EXPECT_EQ(changed, std::vector<std::string>{"tesserine.appearance"});
    settle();
}

TEST_F(SettingsPageTest, SynonymsAreKeptAfterAPauseOfTyping) {
    at("search").findChild<QPlainTextEdit*>("synonyms")->setPlainText("car, auto\nonly one\n");
    ASSERT_TRUE(waitUntil([&] { return !changed.empty(); }));
    EXPECT_EQ(SearchSynonyms::load(environment->preferences()).lines(), "car, auto\n");
}

TEST_F(SettingsPageTest, WhatWasTypedIsKeptWhenTheSettingsAreClosedOrAnotherAreaIsShown) {
    const auto type = [this](const char* words) {
        at("search").findChild<QPlainTextEdit*>("synonyms")->setPlainText(words);
    };
    const auto kept = [this] { return SearchSynonyms::load(environment->preferences()).lines(); };
    page.show();
    type("car, auto");
    at("general");
    EXPECT_EQ(kept(), "car, auto\n");
    type("bill, invoice");
    page.close();
    EXPECT_EQ(kept(), "bill, invoice\n");
}

TEST_F(SettingsPageTest, BacksUpAndChecksWhatIsThere) {
    environment->attachments().insert(
        context(), addNote("Plan"), {.filename = "bill.pdf", .data = {'a'}});
    context().save();
    at("storage");
    ASSERT_TRUE(waitUntil([&] { return text("backups") == "There is no backup yet."; }));
    press("Back Up Now");
    EXPECT_TRUE(
        waitUntil([&] { return text("backups") == "One backup, of 14 March 2026, 09:00."; }));
    press("Check Now");
    EXPECT_TRUE(waitUntil([&] { return text("careResult").starts_with("Everything is in order"); }))
        << text("careResult");
    EXPECT_TRUE(text("careResult").ends_with(" 1 note body, 1 attached file."))
        << text("careResult");
}

TEST_F(SettingsPageTest, ABackupIsMadeAlsoWhenTheSettingsAreClosed) {
    auto closing = std::make_unique<SettingsPage>(*environment);
    closing->showPage("storage");
    press(*closing, "Back Up Now");
    closing.reset();
    environment->waitForBackground();
    const LibraryBackups backups(setting().library, clock, random);
    EXPECT_EQ(backups.list().size(), 1U);
}

TEST_F(SettingsPageTest, TheIndexIsMadeAnewAndSaysWhatIsInIt) {
    addNote("Plan");
    at("search");
    press("Rebuild");
    EXPECT_TRUE(waitUntil([&] { return text("coverage").starts_with("1 of 1 note"); }))
        << text("coverage");
}

TEST_F(SettingsPageTest, APastImportOfOneNoteSaysOneNote) {
    const auto notes = folder / "Notes";
    std::filesystem::create_directory(notes);
    test::putContent(notes / "Plan.md", "# Plan\n");
    const auto sources = importSources(*environment);
    sourceFor(sources, notes)->run(context(), {notes}, {}, {});
    at("exchange");
    EXPECT_TRUE(waitUntil([&] {
        const auto labels = page.findChildren<QLabel*>();
        return std::ranges::any_of(labels, [](const QLabel* label) {
            return label->text().startsWith("1 note, 0 files, from ");
        });
    }));
}

TEST_F(SettingsPageTest, APastImportIsUndoneAfterAQuestionAndToTheEnd) {
    constexpr std::size_t noteCount = 50;
    const auto notes = folder / "Notes";
    std::filesystem::create_directory(notes);
    for (std::size_t note = 0; note < noteCount; ++note) {
        const std::string title = "Plan " + std::to_string(note);
        test::putContent(notes / (title + ".md"), "# " + title + "\n");
    }
    const auto sources = importSources(*environment);
    sourceFor(sources, notes)->run(context(), {notes}, {}, {});
    const auto live = [this] { return context().count<CDNote>({"trashedAt == nil"}); };
    ASSERT_EQ(live(), noteCount);
    const auto has = [](const SettingsPage& shown, const char* title) {
        const auto buttons = shown.findChildren<QPushButton*>();
        return std::ranges::any_of(
            buttons, [&](const QPushButton* button) { return button->text() == title; });
    };
    auto closing = std::make_unique<SettingsPage>(*environment);
    closing->showPage("exchange");
    ASSERT_TRUE(waitUntil([&] { return has(*closing, "Undo…"); }));
    press(*closing, "Undo…");
    ASSERT_TRUE(waitUntil([&] { return has(*closing, "Undo Import"); }));
    EXPECT_EQ(live(), noteCount);
    press(*closing, "Undo Import");
    closing.reset();
    environment->waitForBackground();
    EXPECT_EQ(live(), 0U);
    at("exchange");
    environment->waitForBackground();
    settle();
    EXPECT_FALSE(has(page, "Undo…"));
}

TEST_F(SettingsPageTest, UndoingAnImportTellsOfNotesThatWereChangedSince) {
    const auto notes = folder / "Notes";
    std::filesystem::create_directory(notes);
    for (const char* title : {"Plan", "Bill", "Lease", "Log of tomorrow"}) {
        test::putContent(notes / (std::string(title) + ".md"), "# " + std::string(title) + "\n");
    }
    test::putContent(
        notes / "Log of tomorrow.md",
        "---\nupdated: 2031-01-01T00:00:00Z\n---\n# Log of tomorrow\n");
    const auto sources = importSources(*environment);
    sourceFor(sources, notes)->run(context(), {notes}, {}, {});
    clock.advance(std::chrono::minutes(1));
    CDNote& own = addNote("My own");
    const auto asked = [&] {
        SettingsPage shown(*environment);
        shown.showPage("exchange");
        const auto question = [&] { return shown.findChild<QMessageBox*>("question"); };
        EXPECT_TRUE(waitUntil([&] {
            press(shown, "Undo…");
            return question() != nullptr;
        }));
        environment->waitForBackground();
        settle();
        EXPECT_EQ(shown.findChildren<QMessageBox*>("question").size(), 1);
        const std::string text = question()->text().toStdString();
        auto* const cancel = question()->button(QMessageBox::Cancel);
        EXPECT_EQ(question()->defaultButton(), cancel) << "nothing is lost by Return";
        cancel->click();
        return text;
    };
    const std::string made = "The notes that it made go to the trash.";
    const std::string replaced = " Notes that it replaced stay as they are.";
    EXPECT_EQ(asked(), made + replaced);

    const auto change = [&](const std::string& title) {
        auto* const note = context().fetchFirst<CDNote>({.predicate = {"title == %@", title}});
        environment->notes().updateNote(context(), *note, {.html = "<p>More.</p>"});
        context().save();
    };
    change("Plan");
    EXPECT_EQ(
        asked(),
        made + " 1 of them was changed since the import; it goes to the trash as well." + replaced);
    change("Bill");
    environment->notes().updateNote(context(), own, {.html = "<p>More.</p>"});
    context().save();
    EXPECT_EQ(
        asked(),
        made + " 2 of them were changed since the import; they go to the trash as well."
            + replaced);
    EXPECT_EQ(context().count<CDNote>({"trashedAt == nil"}), 5U);
}

TEST_F(SettingsPageTest, AsksForWhatOthersDo) {
    std::vector<std::string> asked;
    const auto note = [&](const char* what) {
        return [&asked, what] { asked.emplace_back(what); };
    };
    QObject::connect(&page, &SettingsPage::keysAsked, &page, note("keys"));
    QObject::connect(&page, &SettingsPage::importAsked, &page, note("import"));
    QObject::connect(&page, &SettingsPage::exportAsked, &page, note("export"));
    press("Show…");
    at("exchange");
    press("Import…");
    press("Export…");
    EXPECT_EQ(asked, (std::vector<std::string>{"keys", "import", "export"}));
}

TEST_F(SettingsPageTest, AreasOfOtherRoomsStandInOrderAndAreMadeWhenShown) {
    int made = 0;
    const auto make = [&](QWidget* parent) {
        auto* const form = new SettingsForm("Updates", environment->preferences(), parent);
        form->addSwitch("tesserine.test", {"Test"}, false);
        ++made;
        return form;
    };
    page.addPage("updates", "Updates", "info", make);
    page.addPage("elsewhere", "Elsewhere", "info", make);
    page.addPage("editor", "Editor", "pencil", make);
    QStringList titles;
    const auto& areas = *page.findChild<QListWidget*>("settingsAreas");
    for (int row = 0; row < areas.count(); ++row) {
        titles << areas.item(row)->text();
    }
    EXPECT_EQ(
        titles.join(", ").toStdString(),
        "General, Editor, Search, Storage, Import & Export, Updates, Elsewhere");
    EXPECT_EQ(areas.currentItem()->text(), "General");
    EXPECT_EQ(made, 0);
    at("updates").findChild<QCheckBox*>("tesserine.test")->click();
    at("general");
    at("updates");
    EXPECT_EQ(made, 1);
    EXPECT_EQ(changed, std::vector<std::string>{"tesserine.test"});
}

}  // namespace
}  // namespace tesserine::app
