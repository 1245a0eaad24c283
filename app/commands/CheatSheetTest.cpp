#include "app/commands/CheatSheet.h"

#include "app/commands/KeyDialog.h"
#include "app/testing/WidgetFaultsFixture.h"
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
        QTest::keyClick(&row(id), Qt::Key_Return);
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

TEST_F(CheatSheetTest, ReturnAndEscapeLeadOutOfTheFieldThatTakesKeys) {
    const auto pressIn = [](KeyDialog& dialog, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(dialog.findChild<QKeySequenceEdit*>(), key, modifiers);
    };
    KeyDialog& dialog = changing("format.bold");
    pressIn(dialog, Qt::Key_B, Qt::ControlModifier | Qt::AltModifier);
    pressIn(dialog, Qt::Key_Return);
    EXPECT_EQ(row("format.bold").accessibleName().toStdString(), "Bold, Ctrl+Alt+B");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    KeyDialog& left = changing("format.bold");
    pressIn(left, Qt::Key_Escape);
    EXPECT_FALSE(left.isVisible());
    EXPECT_EQ(row("format.bold").accessibleName().toStdString(), "Bold, Ctrl+Alt+B");
}

TEST_F(CheatSheetTest, EveryCommandIsListedWithItsKeysAndNothingIsCut) {
    for (const Command& command : commandTable()) {
        SCOPED_TRACE(command.id);
        const auto* const button =
            sheet->findChild<QAbstractButton*>(QString::fromStdString(std::string(command.id)));
        ASSERT_NE(button, nullptr);
        const QString keys =
            QKeySequence::listToString(commands.keys(command.id), QKeySequence::NativeText);
        EXPECT_TRUE(button->accessibleName().endsWith(keys.isEmpty() ? "no keys" : keys))
            << button->accessibleName().toStdString();
    }
    for (const int width : {sheet->minimumSizeHint().width(), sheet->sizeHint().width(), 1200}) {
        SCOPED_TRACE(width);
        sheet->resize(width, 700);
        QCoreApplication::processEvents();
        EXPECT_EQ(test::layoutFaults(*sheet), "");
    }
    EXPECT_EQ(test::namelessControls(*sheet), "");
}

TEST_F(CheatSheetTest, TypingLeavesWhatFits) {
    QTest::keyClicks(sheet->findChild<QLineEdit*>(), "bold");
    EXPECT_TRUE(row("format.bold").isVisible());
    EXPECT_FALSE(row("task.due").isVisible());
    QTest::keyClicks(sheet->findChild<QLineEdit*>(), "xyz");
    EXPECT_FALSE(row("format.bold").isVisible());
    const auto labels = sheet->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->isVisible() && label->text() == "No command has a name like this.";
    }));
}

}  // namespace
}  // namespace tesserine::app
