#include "app/desktop/Tray.h"

#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QMenu>

#include <string>
#include <vector>

namespace tesserine::app {
namespace {

using TrayTest = test::WindowFixture;

TEST_F(TrayTest, WithoutATrayTheModeIsNotThere) {
    environment->preferences().set(Tray::preferenceKey, true);
    Tray tray(*environment);
    tray.refresh();
    ASSERT_FALSE(Tray::isPossible()) << "the tests' desktop has none";
    EXPECT_FALSE(tray.isOn());
    EXPECT_TRUE(QApplication::quitOnLastWindowClosed()) << "nothing would bring the window back";
}

TEST_F(TrayTest, TheMenuOffersTheTasksOfTodayAndWhatCanBeBegun) {
    Tray tray(*environment);
    const CDTask& task = addTask("Salt & pepper today");
    addTask("Later on tomorrow");
    std::vector<std::string> asked;
    QObject::connect(&tray, &Tray::asked, &tray, [&](const Request& request) {
        asked.push_back(request.argument().toStdString());
    });
    std::string titles;
    for (QAction* action : tray.menu().actions()) {
        titles += action->text().toStdString() + "\n";
        if (action->text() != "Quit") action->trigger();
    }
    EXPECT_EQ(
        titles, "New Task…\nNew Note\nSearch…\nToday\nSalt && pepper\n\nOpen Tesserine\nQuit\n");
    EXPECT_EQ(
        asked,
        (std::vector<std::string>{
            "new-task",
            "new-note",
            "tesserine://search/",
            "tesserine://task/" + task.id->text(),
            ""}));
}

}  // namespace
}  // namespace tesserine::app
