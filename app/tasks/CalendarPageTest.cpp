#include "app/tasks/CalendarPage.h"

#include "app/commands/Commands.h"
#include "app/state/WindowFixture.h"
#include "app/tasks/CalendarGrid.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TasksPage.h"

#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QTest>
#include <QTextEdit>

#include <memory>

namespace tesserine::app {
namespace {

class CalendarTest : public test::WindowFixture {
public:
    CalendarTest() {
        environment->preferences().set("tesserine.reduceMotion", true);
        page.resize(1000, 700);
        page.showPlace({.kind = Place::Kind::calendar});
        page.show();
        QApplication::setActiveWindow(&page);
        grid.setFocus();
    }
    std::string title() { return page.findChild<QLabel*>("calendarTitle")->text().toStdString(); }
    std::string description() { return grid.accessibleDescription().toStdString(); }
    void press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
        QTest::keyClick(&grid, key, with);
    }
    void dropOn(const CDTask& task, std::size_t day) {
        const std::unique_ptr<QMimeData> data(mimeDataOf({*task.id}, {}));
        const QPoint place = grid.areaOfDay(day).center();
        QDragEnterEvent enter(place, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(&grid, &enter);
        QDropEvent event(place, Qt::MoveAction, data.get(), Qt::LeftButton, {});
        QApplication::sendEvent(&grid, &event);
    }

    Commands commands{environment->preferences()};
    TasksPage page{*environment, commands};
    CalendarGrid& grid{page.calendarPage().grid()};
};

TEST_F(CalendarTest, KeysMoveBetweenDaysMonthsAndTasks) {
    const CDTask& first = addTask("Early 2026-03-21 8am");
    addTask("Late 2026-03-21 8pm");
    EXPECT_EQ(title(), "March 2026");
    EXPECT_EQ(description(), "Today, Saturday 14 March, 0 tasks");
    press(Qt::Key_Down);
    EXPECT_EQ(description(), "Saturday 21 March, 2 tasks, 08:00 Early, 20:00 Late");
    press(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(grid.chosenTask(), *first.id);
    press(Qt::Key_1);
    EXPECT_EQ(first.priority, 1) << "commands act on the chosen task";
    press(Qt::Key_Right);
    EXPECT_FALSE(grid.chosenTask()) << "another day";
    press(Qt::Key_PageDown);
    EXPECT_EQ(title(), "April 2026");
    press(Qt::Key_Home);
    EXPECT_EQ(description(), "Today, Saturday 14 March, 0 tasks");
    press(Qt::Key_Return);
    QTest::keyClicks(page.calendarPage().quickAdd().focusProxy(), "Swim 6pm");
    QTest::keyClick(page.calendarPage().quickAdd().focusProxy(), Qt::Key_Return);
    EXPECT_EQ(description(), "Today, Saturday 14 March, 1 task, 18:00 Swim");
}

TEST_F(CalendarTest, AClickOnADayBeginsATaskThere) {
    // Monday first: the month begins on 23 February, so that the 20th is the 25th cell.
    QTest::mouseClick(&grid, Qt::LeftButton, {}, grid.areaOfDay(25).center());
    QTest::keyClicks(page.calendarPage().quickAdd().focusProxy(), "Mow the lawn");
    QTest::keyClick(page.calendarPage().quickAdd().focusProxy(), Qt::Key_Return);
    EXPECT_EQ(description(), "Friday 20 March, 1 task, Mow the lawn");
    QTest::mouseClick(&grid, Qt::LeftButton, {}, grid.areaOfDay(26).center());
    EXPECT_FALSE(grid.chosenTask());
    const CDTask& task = *context().fetch<CDTask>().front();
    QTest::mouseClick(&grid, Qt::LeftButton, {}, grid.areaOf(*task.id).center());
    EXPECT_EQ(grid.chosenTask(), *task.id);
    EXPECT_EQ(page.detail().task(), *task.id);
}

TEST_F(CalendarTest, ASentenceWithoutEnterIsThereAtTheNextStart) {
    const auto atNextStart = [&] {
        EXPECT_TRUE(page.flush());
        Commands otherCommands(environment->preferences());
        const TasksPage next(*environment, otherCommands);
        const auto wordsOf = [](const QuickAddBar& bar) {
            return bar.findChild<QTextEdit*>()->toPlainText().toStdString();
        };
        return wordsOf(next.calendarPage().quickAdd()) + "|" + wordsOf(next.listPage().quickAdd());
    };
    QWidget* const field = page.calendarPage().quickAdd().focusProxy();
    QTest::keyClicks(field, "Mow the lawn");
    EXPECT_EQ(atNextStart(), "Mow the lawn|") << "the list's bar has its own";
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(atNextStart(), "|");
}

TEST_F(CalendarTest, ATaskIsDraggedToAnotherDay) {
    const CDTask& task = addTask("Dentist 2026-03-19 10am");
    dropOn(task, 27);
    EXPECT_EQ(task.dueDate->iso(), "2026-03-22T10:00:00.000Z");
    EXPECT_EQ(description(), "Sunday 22 March, 1 task, 10:00 Dentist");
}

TEST_F(CalendarTest, WhatWasPressedIsNotTheTaskThatTookItsPlace) {
    CDTask& pressed = addTask("Pressed 2026-03-19 8am");
    addTask("Next 2026-03-19 10am");
    std::optional<Uuid> opened;
    QObject::connect(&grid, &CalendarGrid::opened, &grid, [&](const Uuid& id) { opened = id; });
    const QPoint place = grid.areaOf(*pressed.id).center();
    const auto pressAgain = [&] {
        QMouseEvent second(
            QEvent::MouseButtonDblClick, place, place, Qt::LeftButton, Qt::LeftButton, {});
        QApplication::sendEvent(&grid, &second);
    };
    QTest::mouseClick(&grid, Qt::LeftButton, {}, place);
    pressAgain();
    EXPECT_EQ(opened, *pressed.id);
    opened.reset();
    QTest::mouseClick(&grid, Qt::LeftButton, {}, place);
    environment->tasks().remove(context(), pressed);
    context().save();
    pressAgain();
    EXPECT_FALSE(opened);
}

TEST_F(CalendarTest, APressMovesNothingUnderThePointerThatBeginsToDrag) {
    const CDTask& task = addTask("Swim 2026-04-02");
    const QRect before = grid.areaOf(*task.id);
    QTest::mousePress(&grid, Qt::LeftButton, {}, before.center());
    EXPECT_EQ(title(), "March 2026") << "the days of other months stay as well";
    EXPECT_EQ(grid.areaOf(*task.id), before);
    QTest::mouseRelease(&grid, Qt::LeftButton, {}, before.center());
    EXPECT_EQ(title(), "April 2026");
    EXPECT_EQ(grid.chosenTask(), *task.id);
    dropOn(task, 9);
    EXPECT_EQ(grid.chosenTask(), *task.id) << "who is chosen stays so on another day";
}

TEST_F(CalendarTest, ADayTooFullTellsHowManyMore) {
    for (int i = 0; i < 60; ++i) {
        environment->tasks().create(
            context(),
            {.title = std::to_string(i),
             .due = TaskDue{.date = *Instant::parseISO("2026-03-20T00:00:00Z")}});
    }
    context().save();
    const auto tasks = context().fetch<CDTask>({.sort = {{"sortIndex"}}});
    EXPECT_FALSE(grid.areaOf(*tasks.front()->id).isEmpty());
    EXPECT_TRUE(grid.areaOf(*tasks.back()->id).isEmpty());
    QTest::mouseClick(&grid, Qt::LeftButton, {}, grid.areaOfMore(25).center());
    auto* const menu = grid.findChild<QMenu*>("tasksOfDay");
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->actions().size(), 41);
    EXPECT_EQ(menu->actions().back()->text().toStdString(), "and 20 more");
    menu->close();
}

TEST_F(CalendarTest, WhatIsDoneIsStruckOutAmongThoseThatHaveNoRoom) {
    CDTask& done = addTask("Done 2026-03-20");
    for (int i = 0; i < 9; ++i) {
        addTask("Open 2026-03-20");
    }
    environment->tasks().complete(context(), done, environment->calendar());
    context().save();
    QTest::mouseClick(&grid, Qt::LeftButton, {}, grid.areaOfMore(25).center());
    auto* const menu = grid.findChild<QMenu*>("tasksOfDay");
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 10);
    EXPECT_FALSE(menu->actions().front()->font().strikeOut());
    EXPECT_TRUE(menu->actions().back()->font().strikeOut());
    menu->close();
}

TEST_F(CalendarTest, ALongMonthIsShortenedWhereItWouldBeCut) {
    for (int month = 3; month < 9; ++month) {
        press(Qt::Key_PageDown);
    }
    EXPECT_EQ(title(), "September 2026");
    page.resize(page.minimumSizeHint().width(), 500);
    settle();
    EXPECT_EQ(title(), "Sep 2026");
    page.resize(1000, 500);
    settle();
    EXPECT_EQ(title(), "September 2026");
}
}  // namespace
}  // namespace tesserine::app
