#include "app/tasks/TaskListPage.h"

#include "app/look/EmptyState.h"
#include "app/state/WindowFixture.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/WhenPopup.h"

#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTest>

namespace tesserine::app {
namespace {

class TaskListPageTest : public test::WindowFixture {
public:
    TaskListPageTest() {
        environment->preferences().set("tesserine.reduceMotion", true);
        page.resize(520, 640);
    }
    void show(Place::Kind kind) {
        page.showPlace({.kind = kind});
        page.show();
        QApplication::setActiveWindow(&page);
        list.setFocus();
    }
    TaskListModel& model() { return static_cast<TaskListModel&>(*list.model()); }
    std::string titles() {
        QStringList titles;
        for (int row = 0; row < model().rowCount(); ++row) {
            titles += model().data(model().index(row), Qt::DisplayRole).toString();
        }
        return titles.join(" | ").toStdString();
    }
    QPoint circleOf(const CDTask& task) {
        return list.visualRect(model().indexOf(*task.id)).topLeft() + QPoint(20, 18);
    }
    void drop(const std::vector<Uuid>& tasks, int row, bool isLowerHalf) {
        QModelIndexList indexes;
        for (const Uuid& task : tasks) {
            indexes += model().indexOf(task);
        }
        const std::unique_ptr<QMimeData> data(model().mimeData(indexes));
        const QRect line = list.visualRect(model().index(row));
        const QPoint place = isLowerHalf ? line.bottomLeft() : line.topLeft();
        QDragEnterEvent enter(place, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &enter);
        QDropEvent event(place, Qt::MoveAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &event);
    }

    TaskListPage page{*environment};
    TaskListView& list{page.list()};
};

TEST_F(TaskListPageTest, AClickOnTheCircleCompletesAndUndoBringsBack) {
    CDTask& task = addTask("Plan the year");
    addTask("Other");
    show(Place::Kind::inbox);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, circleOf(task));
    EXPECT_EQ(titles(), "Other");
    EXPECT_EQ(
        page.findChild<QLabel*>("undoSentence")->text().toStdString(), "Completed “Plan the year”");
    QTest::mouseClick(page.findChild<QPushButton*>("undo"), Qt::LeftButton);
    EXPECT_EQ(titles(), "Plan the year | Other");
    EXPECT_FALSE(page.findChild<QWidget*>("undoBar")->isVisible());
}

TEST_F(TaskListPageTest, TheTickIsDrawnBeforeTheLineGoes) {
    environment->preferences().set("tesserine.reduceMotion", false);
    CDTask& task = addTask("Plan");
    show(Place::Kind::inbox);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, circleOf(task));
    EXPECT_TRUE(task.completedAt) << "done at once, whatever is drawn";
    EXPECT_EQ(titles(), "Plan");
    EXPECT_TRUE(waitUntil([&] { return titles().empty(); }));
}

TEST_F(TaskListPageTest, ActsOnAllThatIsSelected) {
    const CDTask& a = addTask("a");
    const CDTask& b = addTask("b");
    const CDTask& c = addTask("c");
    show(Place::Kind::inbox);
    list.selectTask(*a.id);
    QTest::keyClick(&list, Qt::Key_Down, Qt::ShiftModifier);
    page.setPriority(TaskPriority::p2);
    EXPECT_EQ(a.priority, 2);
    EXPECT_EQ(b.priority, 2);
    EXPECT_EQ(c.priority, 4);

    page.askDue();
    auto* const popup = page.findChild<WhenPopup*>();
    ASSERT_NE(popup, nullptr);
    QTest::keyClicks(popup->focusWidget(), "next friday 3pm");
    QTest::keyClick(popup->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(b.dueDate->iso(), "2026-03-27T15:00:00.000Z");
    EXPECT_EQ(a.dueDate, b.dueDate);

    page.removeSelected();
    auto* const question = page.findChild<QMessageBox*>("deleteTasks");
    ASSERT_NE(question, nullptr);
    question->button(QMessageBox::Cancel)->click();
    EXPECT_EQ(titles(), "a | b | c");
    settle();
    page.tickSelected();
    EXPECT_EQ(titles(), "c");
    EXPECT_EQ(page.findChild<QLabel*>("undoSentence")->text().toStdString(), "Completed 2 tasks");
}

TEST_F(TaskListPageTest, DraggedTasksTakeTheirNewPlace) {
    CDTask& a = addTask("a");
    CDTask& b = addTask("b");
    addTask("c");
    const CDTask& d = addTask("d");
    show(Place::Kind::inbox);
    drop({*d.id}, 0, false);
    EXPECT_EQ(titles(), "d | a | b | c");
    drop({*d.id, *a.id}, 3, true);
    EXPECT_EQ(titles(), "b | c | d | a");
    drop({*b.id}, 1, false);
    EXPECT_EQ(titles(), "b | c | d | a") << "where it was";

    environment->tasks().setDue(
        a, TaskDue{.date = *Instant::parseISO("2026-03-16T08:00:00Z"), .hasTime = true});
    environment->tasks().setDue(b, TaskDue{.date = *Instant::parseISO("2026-03-18T00:00:00Z")});
    context().save();
    show(Place::Kind::upcoming);
    ASSERT_EQ(titles(), "Monday 16 March | a | Wednesday 18 March | b");
    drop({*a.id}, 3, true);
    EXPECT_EQ(titles(), "Wednesday 18 March | b | a");
    EXPECT_EQ(a.dueDate->iso(), "2026-03-18T08:00:00.000Z") << "its time is kept";
}

TEST_F(TaskListPageTest, TheBarAddsToTheListThatIsShown) {
    show(Place::Kind::today);
    EXPECT_TRUE(page.findChild<EmptyState*>()->isVisible());
    page.quickAdd().begin("Water plants");
    QTest::keyClick(page.quickAdd().focusProxy(), Qt::Key_Return);
    EXPECT_EQ(titles(), "Today, Saturday 14 March | Water plants");
    EXPECT_EQ(page.selectedTasks().size(), 1U) << "what was added is at hand";
    EXPECT_FALSE(page.findChild<EmptyState*>()->isVisible());

    CDProject& garden = environment->projects().create(context(), "Garden");
    context().save();
    page.showPlace({.kind = Place::Kind::project, .id = *garden.id});
    page.quickAdd().begin("Rake leaves");
    QTest::keyClick(page.quickAdd().focusProxy(), Qt::Key_Return);
    EXPECT_EQ(titles(), "Rake leaves");
    EXPECT_EQ(garden.tasks.count(), 1U);
}

}  // namespace
}  // namespace tesserine::app
