#include "app/commands/CommandPalette.h"

#include "base/Preferences.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QLineEdit>
#include <QListView>
#include <QPointer>
#include <QTest>

#include <algorithm>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

/// A window with three commands that can be done, and its palette.
class CommandPaletteTest : public ::testing::Test {
protected:
    CommandPaletteTest() {
        for (const char* id : {"note.new", "note.trash", "view.sidebar"}) {
            commands.on(id, &window, [this, id] { done.emplace_back(id); });
        }
        window.resize(700, 500);
        window.show();
        palette->open();
    }

    QLineEdit& field() { return *palette->findChild<QLineEdit*>("pickerField"); }
    std::vector<std::string> rows() {
        const QAbstractItemModel& model = *palette->findChild<QListView*>("pickerList")->model();
        std::vector<std::string> all;
        for (int row = 0; row < model.rowCount(); ++row) {
            const QVariant text = model.index(row, 0).data(Qt::AccessibleTextRole);
            all.push_back(text.toString().toStdString());
        }
        return all;
    }

    Preferences preferences = Preferences::inMemory();
    QWidget window;
    Commands commands{preferences};
    std::vector<std::string> done;
    QPointer<CommandPalette> palette = new CommandPalette(commands, &window);
};

TEST_F(CommandPaletteTest, ShowsWhatCanBeDoneNowWithItsKeys) {
    EXPECT_EQ(
        rows(),
        (std::vector<std::string>{
            "New Note, File, Ctrl+N", "Sidebar, View, F9", "Move to Trash, Note, Del"}));
    QTest::keyClicks(&field(), "trash");
    EXPECT_EQ(rows(), std::vector<std::string>{"Move to Trash, Note, Del"});
    QTest::keyClicks(&field(), "zz");
    EXPECT_TRUE(rows().empty());
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_PageDown, Qt::Key_PageUp}) {
        QTest::keyClick(&field(), key);
    }
    QTest::keyClick(&field(), Qt::Key_Return);
    ASSERT_TRUE(palette) << "there is nothing to pick";
    QTest::keyClick(&field(), Qt::Key_Escape);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(palette);
    EXPECT_TRUE(done.empty());
}

TEST_F(CommandPaletteTest, FindsCommandsByTheirMenuAndByWhatElsePeopleCallThem) {
    for (const char* id : {"go.inbox", "app.settings", "note.tags"}) {
        commands.on(id, &window, [] {});
    }
    struct Case {
        const char* typed;
        std::vector<std::string> rows;
    };
    for (const auto& [typed, expected] : {
             Case{"go inbox", {"Inbox, Go"}},
             Case{"inbox go", {"Inbox, Go"}},
             Case{"preferences", {"Settings…, File, Ctrl+,"}},
             Case{"delete note", {"Move to Trash, Note, Del"}},
             // What has the word in its title comes first.
             Case{
                 "note",
                 {"New Note, File, Ctrl+N", "Move to Trash, Note, Del", "Tags…, Note, Ctrl+Alt+T"}},
             Case{"go sidebar", {}},
         }) {
        SCOPED_TRACE(typed);
        field().setText(typed);
        auto found = rows();
        if (found.size() > 1) std::sort(found.begin() + 1, found.end());
        EXPECT_EQ(found, expected);
    }
}

TEST_F(CommandPaletteTest, ReturnDoesTheChosenCommandOnceItHasClosed) {
    QTest::keyClick(&field(), Qt::Key_Down);
    QTest::keyClick(&field(), Qt::Key_Down);
    QTest::keyClick(&field(), Qt::Key_Down);  // round to the first
    QTest::keyClick(&field(), Qt::Key_Up);    // and back to the last
    QTest::keyClick(&field(), Qt::Key_Return);
    EXPECT_TRUE(done.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(done, std::vector<std::string>{"note.trash"});
}

}  // namespace
}  // namespace tesserine::app
