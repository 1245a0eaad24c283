#include "app/commands/CheatSheet.h"

#include "app/commands/KeyDialog.h"
#include "base/Preferences.h"

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <string>

namespace tesserine::app {
namespace {

class CheatSheetTest : public ::testing::Test {
protected:
    CheatSheetTest() { sheet->show(); }

    QAbstractButton& row(const char* id) { return *sheet->findChild<QAbstractButton*>(id); }
    KeyDialog& changing(const char* id) {
        row(id).click();
        return *sheet->findChild<KeyDialog*>();
    }
    static void press(KeyDialog& dialog, const char* button) {
        for (QPushButton* one : dialog.findChildren<QPushButton*>()) {
            if (one->text().remove('&') == button) one->click();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    Preferences preferences = Preferences::inMemory();
    QWidget window;
    Commands commands{preferences};
    CheatSheet* sheet = new CheatSheet(commands, &window);
};

TEST_F(CheatSheetTest, KeysAreChangedByPressingOthers) {
    KeyDialog& dialog = changing("format.bold");
    auto& field = *dialog.findChild<QKeySequenceEdit*>();
    field.setKeySequence(QKeySequence("Ctrl+N"));
    press(dialog, "Use These Keys");
    EXPECT_EQ(
        dialog.findChild<QLabel*>("keyRefusal")->text().toStdString(),
        "Ctrl+N already belongs to “New Note”.");
    field.setKeySequence(QKeySequence("Ctrl+Alt+B"));
    press(dialog, "Use These Keys");
    EXPECT_EQ(row("format.bold").accessibleName().toStdString(), "Bold, Ctrl+Alt+B");

    press(changing("format.bold"), "Usual Keys");
    EXPECT_EQ(row("format.bold").accessibleName().toStdString(), "Bold, Ctrl+B");
    press(changing("format.bold"), "No Keys");
    EXPECT_EQ(row("format.bold").accessibleName().toStdString(), "Bold, no keys");
}

TEST_F(CheatSheetTest, TypingLeavesWhatFits) {
    QTest::keyClicks(sheet->findChild<QLineEdit*>(), "bold");
    EXPECT_TRUE(row("format.bold").isVisible());
    EXPECT_FALSE(row("task.due").isVisible());
}

}  // namespace
}  // namespace tesserine::app
