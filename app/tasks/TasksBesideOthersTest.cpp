#include "app/tasks/GrowingText.h"
#include "app/tasks/TasksPageFixture.h"

#include <QLineEdit>
#include <QTest>

namespace tesserine::app {
namespace {

/// What is typed into tasks and asked about them while other programs change them.
using TasksBesideOthersTest = test::TasksPageFixture;

TEST_F(TasksBesideOthersTest, ATaskCompletedElsewhereWhileItIsTypedInLeavesTheOthers) {
    CDTask& task = addTask("Call Ana");
    addTask("Call Bea");
    addTask("Call Cid");
    show(Place::Kind::inbox);
    list.selectTask(*task.id);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(page.findChild<GrowingText*>("taskTitle"), " tonight");
    const auto background = environment->store().newBackgroundContext();
    environment->tasks().complete(
        *background, *background->find<CDTask>(*task.id), environment->calendar());
    background->save();
    settle();
    EXPECT_EQ(titles(), "Call Bea | Call Cid");
    EXPECT_TRUE(page.flush());
    EXPECT_EQ(task.title, "Call Ana tonight");
}

TEST_F(TasksBesideOthersTest, WordsTypedIntoATaskStayWhenItsProjectIsDeletedElsewhere) {
    std::vector<Uuid> others;
    for (int i = 0; i < 8; ++i) {
        others.push_back(*addTask("Call Bea #Work").id);
    }
    CDTask& task = addTask("Call Ana #Work");
    const Uuid project = *task.project.get()->id;
    page.showPlace({.kind = Place::Kind::project, .id = project});
    page.show();
    QApplication::setActiveWindow(&page);
    list.selectTask(*task.id);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(page.findChild<GrowingText*>("taskTitle"), " tonight");
    const auto elsewhere = environment->store().newBackgroundContext();
    for (const Uuid& other : others) {
        environment->tasks().remove(*elsewhere, *elsewhere->find<CDTask>(other));
    }
    environment->projects().remove(*elsewhere, *elsewhere->find<CDProject>(project));
    elsewhere->save();
    settle();
    EXPECT_EQ(page.findChild<QLabel*>("taskListTitle")->text(), "Inbox");
    EXPECT_TRUE(page.flush());
    EXPECT_EQ(titles(), "Call Ana tonight");
}

TEST_F(TasksBesideOthersTest, WordsMeantForATaskThatGoesAreNotTypedIntoTheNextOne) {
    const CDTask& next = addTask("Next");
    CDTask& typed = addTask("Typed");
    show(Place::Kind::inbox);
    list.selectTask(*typed.id);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(QApplication::focusWidget(), " mine");
    environment->tasks().remove(context(), typed);
    context().save();
    QTest::keyClicks(QApplication::focusWidget(), " 1 more");
    EXPECT_TRUE(page.flush());
    EXPECT_EQ(next.title.valueOr(""), "Next");
    EXPECT_FALSE(next.completedAt);
    EXPECT_EQ(next.priority.valueOr(4), 4);
}

TEST_F(TasksBesideOthersTest, ATaskThatIsTypedIntoStaysOpenWhereverOthersPutIt) {
    const CDTask& next = addTask("Next today");
    CDTask& typed = addTask("Typed today !1");
    show(Place::Kind::today);
    list.selectTask(*typed.id);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(QApplication::focusWidget(), " mine");
    environment->tasks().setDue(
        typed,
        TaskDue{.date = *Instant::parseISO("2026-03-20T00:00:00Z")},
        environment->calendar());
    context().save();
    QTest::keyClicks(QApplication::focusWidget(), " all");
    EXPECT_TRUE(page.flush());
    EXPECT_EQ(typed.title.valueOr(""), "Typed mine all");
    EXPECT_TRUE(list.selectedTasks().empty()) << "no key is meant for the next one";
    list.selectTask(*next.id);
    EXPECT_EQ(page.detail().task(), *typed.id) << "while it has the keys";
    list.setFocus();
    list.selectTask(*next.id);
    EXPECT_EQ(page.detail().task(), *next.id);
}

TEST_F(TasksBesideOthersTest, AnswersAboutATaskThatGoesAreNotTakenForTheNextOne) {
    const CDTask& next = addTask("Next");
    environment->projects().create(context(), "Work");
    const std::string project = next.project.get()->name.valueOr("");
    const auto goesWhileAsked = [&](const auto& ask, const char* answerField, const char* answer) {
        CDTask& asked = addTask("Asked");
        show(Place::Kind::inbox);
        list.selectTask(*asked.id);
        ask();
        auto* const field = page.findChild<QLineEdit*>(answerField);
        ASSERT_NE(field, nullptr);
        QTest::keyClicks(field, answer);
        environment->tasks().remove(context(), asked);
        context().save();
        ASSERT_EQ(page.detail().task(), *next.id);
        QTest::keyClick(field, Qt::Key_Return);
        settle();
    };
    const auto press = [this](const char* button) {
        return [this, button] { page.detail().findChild<QPushButton*>(button)->click(); };
    };
    goesWhileAsked(press("Duedate"), "whenWords", "tomorrow");
    goesWhileAsked(press("Reminder"), "whenWords", "tomorrow 9am");
    goesWhileAsked(press("Project"), "pickerField", "Work");
    goesWhileAsked(
        [this] { page.findChild<QLineEdit*>("addLabel")->setFocus(); }, "addLabel", "urgent");
    EXPECT_FALSE(next.dueDate);
    EXPECT_FALSE(next.reminderAt);
    EXPECT_EQ(next.project.get()->name.valueOr(""), project);
    EXPECT_TRUE(next.labels.empty());
}

TEST_F(TasksBesideOthersTest, WhatIsBeingTypedSurvivesChangesFromElsewhere) {
    CDTask& task = addTask("Plan");
    CDTask& other = addTask("Other");
    show(Place::Kind::inbox);
    list.selectTask(*task.id);
    QTest::keyClick(&list, Qt::Key_Return);
    auto* const title = page.findChild<GrowingText*>("taskTitle");
    QTest::keyClicks(title, " B");
    const auto background = environment->store().newBackgroundContext();
    auto* const elsewhere = background->find<CDTask>(*task.id);
    environment->tasks().setPriority(*elsewhere, TaskPriority::p1);
    background->save();
    ASSERT_TRUE(waitUntil([&] { return task.priority == 1; }));
    EXPECT_EQ(title->toPlainText().toStdString(), "Plan B");
    list.selectTask(*other.id);
    EXPECT_EQ(task.title, "Plan B") << "saved when another task is shown";
    EXPECT_EQ(title->toPlainText().toStdString(), "Other");

    const Uuid gone = *other.id;
    environment->tasks().remove(context(), other);
    context().save();
    EXPECT_NE(page.detail().task(), gone) << "a task that is gone is not shown";
}

}  // namespace
}  // namespace tesserine::app
