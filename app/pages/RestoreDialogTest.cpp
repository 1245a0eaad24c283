#include "app/pages/RestoreDialog.h"

#include "app/state/WindowFixture.h"
#include "base/Files.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include <filesystem>
#include <string>

namespace tesserine::app {
namespace {

namespace fs = std::filesystem;

constexpr const char* damage = "this is not a library";

/// A library with a backup for each of its notes, whose file was then damaged.
class RestoreDialogTest : public test::WindowFixture {
public:
    RestoreDialogTest() {
        for (const char* title : {"First", "Second"}) {
            addNote(title);
            backUp();
            clock.advance(std::chrono::hours(26));
        }
        environment.reset();
        files::removeIfPresent(file);
        files::writeNew(file, bytesOf(damage));
    }

    LibraryBackups backups() { return {setting().library, clock, random}; }
    void backUp() { backups().create(environment->store(), "daily"); }

    static QListWidget& list(const RestoreDialog& dialog) {
        return *dialog.findChild<QListWidget*>("backupList");
    }
    static std::string state(const RestoreDialog& dialog) {
        return dialog.findChild<QLabel*>("restoreState")->text().toStdString();
    }
    static std::string lines(const RestoreDialog& dialog) {
        std::string text;
        for (int row = 0; row < list(dialog).count(); ++row) {
            const QString item = list(dialog).item(row)->text();
            text += item.left(item.lastIndexOf(',')).toStdString() + "\n";  // sizes vary
        }
        return text;
    }
    static QPushButton& button(const RestoreDialog& dialog, const char* title) {
        for (QPushButton* found : dialog.findChildren<QPushButton*>()) {
            if (found->text() == title) return *found;
        }
        throw std::runtime_error(title);
    }
    static void waitForAnswer(const RestoreDialog& dialog) {
        ASSERT_TRUE(waitUntil([&] { return list(dialog).isEnabled(); })) << state(dialog);
    }
    std::string inFile() const { return std::string(textOf(files::read(file, 100'000))); }

    const fs::path file = setting().library / TesserineStore::fileName;
};

TEST_F(RestoreDialogTest, ReturnPutsTheNewestBackupInThePlaceOfTheFileAndKeepsThat) {
    RestoreDialog dialog(setting());
    dialog.show();
    waitForAnswer(dialog);
    EXPECT_EQ(
        lines(dialog),
        "15 March 2026, 11:00, daily\n2 notes\n14 March 2026, 09:00, daily\n1 note\n");
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible()) << "what has begun is not left";
    ASSERT_TRUE(waitUntil([&] { return !dialog.isVisible(); })) << state(dialog);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);

    std::string kept;
    for (const auto& entry : fs::directory_iterator(setting().library)) {
        const bool isAside = entry.path().filename().string().starts_with("Tesserine.sqlite.repl");
        if (isAside) kept += textOf(files::read(entry.path(), 1'000));
    }
    EXPECT_EQ(kept, damage);
    open(setting());
    EXPECT_EQ(context().fetch<CDNote>().size(), 2U);
}

TEST_F(RestoreDialogTest, AnOlderOneIsChosenByKeys) {
    RestoreDialog dialog(setting());
    dialog.show();
    waitForAnswer(dialog);
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Down);
    button(dialog, "Restore").click();
    ASSERT_TRUE(waitUntil([&] { return !dialog.isVisible(); })) << state(dialog);
    open(setting());
    EXPECT_EQ(context().fetch<CDNote>().size(), 1U);
}

TEST_F(RestoreDialogTest, ABackupThatIsDamagedItselfIsRefusedAndTheOthersRemain) {
    const fs::path newest = backups().list().front().folder;
    files::removeIfPresent(newest / TesserineStore::fileName);
    files::writeNew(newest / TesserineStore::fileName, bytesOf("neither is this"));
    RestoreDialog dialog(setting());
    dialog.show();
    waitForAnswer(dialog);
    EXPECT_EQ(list(dialog).item(0)->text().section('\n', 1).section(',', 0, 0), "cannot be read");
    button(dialog, "Restore").click();
    waitForAnswer(dialog);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_NE(state(dialog).find("is not a complete backup"), std::string::npos) << state(dialog);
    EXPECT_EQ(inFile(), damage);
    EXPECT_TRUE(button(dialog, "Restore").isEnabled());
}

TEST_F(RestoreDialogTest, ALibraryThatSomebodyHasOpenIsLeftAlone) {
    backups().restore(backups().list().front().folder);
    open(setting());
    RestoreDialog dialog(setting());
    dialog.show();
    waitForAnswer(dialog);
    button(dialog, "Restore").click();
    waitForAnswer(dialog);
    EXPECT_NE(state(dialog).find("open in another window"), std::string::npos) << state(dialog);
    EXPECT_EQ(context().fetch<CDNote>().size(), 2U);
}

TEST_F(RestoreDialogTest, WithoutABackupItSaysSoAndRestoresNothing) {
    fs::remove_all(backups().folder());
    RestoreDialog dialog(setting());
    dialog.show();
    waitForAnswer(dialog);
    EXPECT_EQ(state(dialog), "There is no backup in this library.");
    EXPECT_FALSE(button(dialog, "Restore").isEnabled());
    QTest::keyClick(&dialog, Qt::Key_Return);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(inFile(), damage);
}

}  // namespace
}  // namespace tesserine::app
