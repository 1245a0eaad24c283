#include "app/commands/Commands.h"

#include "app/commands/KeysError.h"
#include "base/Preferences.h"

#include <gtest/gtest.h>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QWidget>

#include <set>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

QList<QKeySequence> keys(const char* text) { return {QKeySequence(text)}; }

TEST(CommandTable, NamesEachCommandOnceAndSharesNoKeysAtOnePlace) {
    std::set<std::string_view> ids;
    std::set<std::pair<std::string_view, CommandMenu>> titles;
    for (const Command& command : commandTable()) {
        SCOPED_TRACE(command.id);
        EXPECT_TRUE(ids.insert(command.id).second);
        EXPECT_TRUE(titles.emplace(command.title, command.menu).second);
        EXPECT_FALSE(command.title.empty());
        for (const QKeySequence& key : Commands::usualKeys(command.id)) {
            EXPECT_NE(key[0].key(), Qt::Key_unknown) << "keys that Qt can read";
            for (const Command& other : commandTable()) {
                const bool mayShare =
                    &other == &command || !overlap(command.context, other.context);
                EXPECT_TRUE(mayShare || !Commands::usualKeys(other.id).contains(key)) << other.id;
            }
        }
    }
}

TEST(Commands, EveryCommandIsInAMenuOnce) {
    Preferences preferences = Preferences::inMemory();
    const Commands commands(preferences);
    QMenuBar bar;
    commands.fill(bar);
    std::map<QString, int> places;
    for (const QMenu* menu : bar.findChildren<QMenu*>()) {
        EXPECT_FALSE(menu->actions().isEmpty()) << menu->title().toStdString();
        for (const QAction* action : menu->actions())
            ++places[action->objectName()];
    }
    for (const Command& command : commandTable()) {
        EXPECT_EQ(places[commands.action(command.id).objectName()], 1) << command.id;
    }
}

TEST(Commands, ActWhereTheirContextHasTheFocus) {
    Preferences preferences = Preferences::inMemory();
    Commands commands(preferences);
    QWidget window;
    QWidget note(&window);
    QWidget tasks(&window);
    for (QWidget* pane : {&note, &tasks})
        pane->setFocusPolicy(Qt::StrongFocus);
    commands.attach(CommandContext::everywhere, window);
    commands.attach(CommandContext::note, note);
    commands.attach(CommandContext::tasks, tasks);
    std::vector<std::string> done;
    for (const char* id : {"note.new", "format.bold", "task.due"}) {
        commands.on(id, &window, [&done, id] { done.emplace_back(id); });
    }
    window.show();
    QApplication::setActiveWindow(&window);

    const auto press = [&](QWidget& pane) {
        done.clear();
        pane.setFocus();
        QTest::keyClick(&pane, Qt::Key_N, Qt::ControlModifier);
        QTest::keyClick(&pane, Qt::Key_B, Qt::ControlModifier);
        QTest::keyClick(&pane, Qt::Key_D);
        return done;
    };
    EXPECT_EQ(press(note), (std::vector<std::string>{"note.new", "format.bold"}));
    EXPECT_EQ(press(tasks), (std::vector<std::string>{"note.new", "task.due"}));
    EXPECT_FALSE(commands.action("app.quit").isEnabled()) << "nobody handles it";
}

TEST(Commands, ChangedKeysAreKeptAndShownAndCanBeTakenBack) {
    Preferences preferences = Preferences::inMemory();
    Commands commands(preferences);
    commands.setKeys("format.bold", keys("Ctrl+Alt+B"));
    EXPECT_EQ(commands.action("format.bold").toolTip().toStdString(), "Bold (Ctrl+Alt+B)");
    commands.setKeys("app.quit", {});
    EXPECT_EQ(commands.keysText("app.quit").toStdString(), "");

    const Commands later(preferences);
    EXPECT_EQ(later.keys("format.bold"), keys("Ctrl+Alt+B"));
    EXPECT_TRUE(later.keys("app.quit").isEmpty()) << "no keys is a choice as well";

    commands.resetKeys("format.bold");
    commands.resetKeys("app.quit");
    EXPECT_TRUE(preferences.keys().empty()) << "what is usual is not written down";
}

TEST(Commands, KeysThatAreTakenAreRefusedWithASentence) {
    Preferences preferences = Preferences::inMemory();
    Commands commands(preferences);
    const auto refusal = [&](const char* id, const char* text) -> std::string {
        try {
            commands.setKeys(id, keys(text));
        } catch (const KeysError& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(refusal("format.bold", "Ctrl+N"), "Ctrl+N already belongs to “New Note”.");
    EXPECT_EQ(commands.keys("format.bold"), keys("Ctrl+B")) << "nothing changed";
    EXPECT_EQ(refusal("note.new", "Ctrl+B"), "Ctrl+B already belongs to “Bold”.");
    EXPECT_EQ(refusal("format.bold", "Ctrl+A"), "") << "keys of lists are free in a note";
    for (const char* id : {"format.bold", "note.new"}) {
        EXPECT_EQ(refusal(id, "D"), "D is needed for typing. Press Ctrl or Alt with it.");
        EXPECT_NE(refusal(id, "Shift+Left"), "");
        EXPECT_NE(refusal(id, "Space"), "");
        EXPECT_EQ(refusal(id, "F7"), "");
        commands.resetKeys(id);
    }
    EXPECT_EQ(refusal("task.due", "Shift+D"), "") << "nothing is typed into a list of tasks";

    // Somebody wrote it into the file by hand.
    preferences.set(
        "tesserine.keys.tab.new", std::vector<std::string>{"Ctrl+W", "no such key", "E"});
    const Commands later(preferences);
    EXPECT_EQ(later.keys("tab.new"), keys("Ctrl+W"));
    EXPECT_TRUE(later.keys("tab.close").isEmpty()) << "keys are never shared";
}

}  // namespace
}  // namespace tesserine::app
