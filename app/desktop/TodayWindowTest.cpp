#include "app/desktop/TodayWindow.h"

#include "app/commands/Commands.h"
#include "app/state/WindowFixture.h"
#include "app/tasks/TaskListView.h"

#include <gtest/gtest.h>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QApplication>
#include <QTest>

namespace tesserine::app {
namespace {

using TodayWindowTest = test::WindowFixture;

TEST_F(TodayWindowTest, FollowsTheDayAndComesBackWithItsSize) {
    addTask("Call Ann today");
    addTask("Later tomorrow");
    {
        TodayWindow window(*environment);
        window.show();
        const QAbstractItemModel& rows = *window.findChild<QAbstractItemView*>()->model();
        const auto holds = [&](const char* title) {
            return !rows.match(rows.index(0, 0), Qt::DisplayRole, title, 1, Qt::MatchContains)
                        .isEmpty();
        };
        EXPECT_TRUE(waitUntil([&] { return holds("Call Ann"); }));
        EXPECT_FALSE(holds("Later"));
        addTask("Buy milk today");
        EXPECT_TRUE(waitUntil([&] { return holds("Buy milk"); }));
        window.resize(420, 333);
        window.hide();
    }
    EXPECT_EQ(TodayWindow(*environment).size(), QSize(420, 333));
}

TEST_F(TodayWindowTest, KeysOfListsActOnWhatIsSelectedHere) {
    environment->preferences().set("tesserine.reduceMotion", true);
    Commands commands(environment->preferences());
    CDTask& task = addTask("Call Ann today");
    TodayWindow window(*environment);
    window.takeKeys(commands);
    window.show();
    QApplication::setActiveWindow(&window);
    auto& list = *window.findChild<TaskListView*>();
    list.setFocus();
    list.selectTask(*task.id);
    QTest::keyClick(&list, Qt::Key_1);
    EXPECT_EQ(task.priority, 1);
    std::optional<Uuid> opened;
    QObject::connect(
        &window, &TodayWindow::chosen, &window, [&](const Place& place) { opened = place.id; });
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(opened, *task.id);
    commands.setKeys("task.complete", {QKeySequence("X")});
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_FALSE(task.completedAt);
    QTest::keyClick(&list, Qt::Key_X);
    EXPECT_TRUE(task.completedAt) << "as the keys were changed";
}

}  // namespace
}  // namespace tesserine::app
