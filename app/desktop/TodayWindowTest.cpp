#include "app/desktop/TodayWindow.h"

#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QAbstractItemModel>
#include <QAbstractItemView>

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

}  // namespace
}  // namespace tesserine::app
