#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskHistory.h"
#include "app/tasks/TasksPageFixture.h"
#include "app/tasks/WhenPopup.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace tesserine::app {
namespace {

/// What is done to tasks and taken back, on the morning of Saturday, 14 March 2026.
class TasksUndoTest : public test::TasksPageFixture {
public:
    void press(Qt::Key key) { QTest::keyClick(&list, key); }
    void undo() { QTest::keyClick(&list, Qt::Key_Z, Qt::ControlModifier); }
    void redo() { QTest::keyClick(&list, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); }
    void pressOn(const CDTask& task, Qt::Key key) {
        list.selectTask(*task.id);
        press(key);
    }
    /// Answers the question for a date.
    void answer(const char* words) {
        QWidget& field = *page.findChild<WhenPopup*>()->focusWidget();
        QTest::keyClicks(&field, words);
        QTest::keyClick(&field, Qt::Key_Return);
        settle();
        QApplication::setActiveWindow(&page);
    }
    void moveTo(const char* project) {
        press(Qt::Key_M);
        auto* const field = page.findChild<QLineEdit*>("pickerField");
        QTest::keyClicks(field, project);
        QTest::keyClick(field, Qt::Key_Return);
        settle();
        QApplication::setActiveWindow(&page);
    }
    /// The sentence with an offer to undo; empty when none is shown.
    std::string offer() {
        return page.findChild<QPushButton*>("undo")->isVisible() ? undoSentence() : "";
    }
    static std::string stateOf(const CDTask& task) {
        std::string state = task.project->name.valueOr("");
        if (task.dueDate) state += " " + task.dueDate->iso().substr(0, 16);
        if (task.priority != 4) state += " p" + std::to_string(task.priority.valueOr(4));
        if (task.completedAt) state += " done";
        return state;
    }
};

TEST_F(TasksUndoTest, TheKeyTakesBackTheLastThingDoneAndThenTheOneBefore) {
    CDTask& first = addTask("First");
    CDTask& second = addTask("Second");
    CDTask& third = addTask("Third 2026-03-20 3pm");
    environment->projects().create(context(), "Work");
    context().save();
    show(Place::Kind::allTasks);
    const std::string inbox = stateOf(first);

    pressOn(first, Qt::Key_Space);
    pressOn(second, Qt::Key_D);
    answer("tomorrow");
    EXPECT_EQ(offer(), "“Second” is due tomorrow");
    moveTo("Work");
    EXPECT_EQ(offer(), "Moved “Second” to Work");
    press(Qt::Key_2);
    EXPECT_EQ(offer(), "") << "of the move, which is not the last thing any more";
    EXPECT_EQ(stateOf(second), "Work 2026-03-15T00:00 p2");

    undo();
    EXPECT_EQ(stateOf(second), "Work 2026-03-15T00:00");
    undo();
    EXPECT_EQ(stateOf(second), inbox + " 2026-03-15T00:00");
    undo();
    EXPECT_EQ(stateOf(second), inbox);
    EXPECT_EQ(stateOf(first), inbox + " done");
    undo();
    EXPECT_EQ(stateOf(first), inbox);
    undo();
    EXPECT_EQ(stateOf(first), inbox) << "there is nothing left";

    press(Qt::Key_2);
    show(Place::Kind::today);
    undo();
    EXPECT_EQ(stateOf(second), inbox) << "also from another list";
    EXPECT_EQ(undoSentence(), "“Second” is as it was");
    show(Place::Kind::inbox);
    pressOn(second, Qt::Key_2);
    page.detail().findChild<QLineEdit*>("addLabel")->setText("count");
    page.detail().flush();
    ASSERT_EQ(second.labels.all().size(), 1U);
    undo();
    EXPECT_TRUE(second.labels.all().empty());
    EXPECT_EQ(stateOf(second), inbox + " p2") << "it was not the last thing";
    undo();
    EXPECT_EQ(stateOf(second), inbox);

    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_D);
    answer("tomorrow");
    EXPECT_EQ(offer(), "3 tasks are due tomorrow");
    EXPECT_EQ(stateOf(third), inbox + " 2026-03-15T15:00") << "keeps its time";
    QTest::mouseClick(page.findChild<QPushButton*>("undo"), Qt::LeftButton);
    EXPECT_EQ(stateOf(first), inbox);
    EXPECT_EQ(stateOf(third), inbox + " 2026-03-20T15:00");
    EXPECT_FALSE(context().hasChanges()) << "saved";
}

TEST_F(TasksUndoTest, DragsAndChangesBesideTheListAreTakenBackToo) {
    CDTask& first = addTask("First 2026-03-16 8am");
    CDTask& second = addTask("Second 2026-03-18");
    CDTask& part = environment->tasks().create(context(), {.title = "Part", .parent = &second});
    context().save();
    show(Place::Kind::upcoming);
    const std::string before = stateOf(first);
    drop({*first.id}, 3, true);
    EXPECT_EQ(offer(), "“First” is due Wed 18 Mar 08:00");
    list.selectTask(*second.id);
    page.detail().findChild<QPushButton*>("Duedate")->click();
    answer("2026-03-19");
    EXPECT_EQ(offer(), "“Second” is due Thu 19 Mar");
    for (auto* button : page.findChildren<QAbstractButton*>()) {
        if (button->accessibleName() == "Complete “Part”") button->click();
    }
    ASSERT_TRUE(part.completedAt);
    undo();
    EXPECT_FALSE(part.completedAt);
    undo();
    EXPECT_EQ(second.dueDate->iso(), "2026-03-18T00:00:00.000Z");
    EXPECT_NE(stateOf(first), before);
    undo();
    EXPECT_EQ(stateOf(first), before);
}

TEST_F(TasksUndoTest, ADayThatIsChosenBesideTheListKeepsTheTimeToo) {
    CDTask& task = addTask("Meeting 2026-03-26 2pm");
    CDTask& other = addTask("Other 2026-03-27");
    environment->tasks().setReminder(task, *Instant::parseISO("2026-03-26T13:00:00Z"));
    context().save();
    show(Place::Kind::allTasks);
    list.selectTask(*task.id);
    page.detail().findChild<QPushButton*>("Duedate")->click();
    answer("2026-03-30");
    EXPECT_EQ(task.dueDate->iso(), "2026-03-30T14:00:00.000Z");
    EXPECT_EQ(task.reminderAt->iso(), "2026-03-30T13:00:00.000Z");
    show(Place::Kind::today);
    undo();
    EXPECT_EQ(undoSentence(), "“Meeting” is due Thu 26 Mar 14:00 again");
    EXPECT_EQ(task.dueDate->iso(), "2026-03-26T14:00:00.000Z");
    EXPECT_EQ(task.reminderAt->iso(), "2026-03-26T13:00:00.000Z") << "with its date";

    show(Place::Kind::allTasks);
    pressOn(other, Qt::Key_Space);
    pressOn(task, Qt::Key_Space);
    show(Place::Kind::today);
    undo();
    EXPECT_EQ(undoSentence(), "“Meeting” is open again");
}

TEST_F(TasksUndoTest, WordsAreTakenBackAndTypedAgainByTheKeys) {
    CDTask& task = addTask("Order banners");
    CDNote& note = addNote("Plan");
    task.linkedNote = &note;
    context().save();
    show(Place::Kind::inbox);
    pressOn(task, Qt::Key_2);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(QApplication::focusWidget(), " today");
    page.flush();
    auto& notes = *page.detail().findChild<QWidget*>("taskDetails");
    notes.setFocus();
    QTest::keyClicks(&notes, "Three of them");
    page.flush();
    for (auto* button : page.findChildren<QAbstractButton*>()) {
        if (button->accessibleName() == "Do not link this note") button->click();
    }
    ASSERT_EQ(task.linkedNote.get(), nullptr);
    list.setFocus();
    undo();
    EXPECT_EQ(task.linkedNote.get(), &note);
    undo();
    EXPECT_EQ(task.details.valueOr(""), "");
    EXPECT_EQ(task.title, "Order banners today");
    undo();
    EXPECT_EQ(task.title, "Order banners");
    EXPECT_EQ(task.priority, 2) << "that was done before";
    EXPECT_TRUE(TaskHistory::of(*environment).canRedo());
    QTest::keyClick(&list, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(task.title, "Order banners today");
    QTest::keyClick(&list, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(task.details, "Three of them");

    environment->tasks().setDetails(task, "Four of them");
    context().save();
    undo();
    EXPECT_EQ(task.details, "Four of them") << "written by others since";
    EXPECT_EQ(undoSentence(), "“Order banners today” was changed since and stays as it is");
    undo();
    undo();
    EXPECT_EQ(task.priority, 4);
}

TEST_F(TasksUndoTest, WhatOthersChangedMeanwhileIsLeft) {
    CDTask& first = addTask("First");
    CDTask& second = addTask("Second");
    show(Place::Kind::inbox);
    pressOn(first, Qt::Key_Space);
    pressOn(second, Qt::Key_D);
    answer("tomorrow");
    environment->tasks().setDue(
        second,
        TaskDue{.date = *Instant::parseISO("2026-03-20T00:00:00Z")},
        environment->calendar());
    context().save();
    undo();
    EXPECT_EQ(second.dueDate->iso(), "2026-03-20T00:00:00.000Z");
    EXPECT_TRUE(first.completedAt) << "it was not the last thing";
    undo();
    EXPECT_FALSE(first.completedAt);

    pressOn(first, Qt::Key_Space);
    pressOn(second, Qt::Key_Space);
    environment->tasks().remove(context(), second);
    context().save();
    undo();
    EXPECT_FALSE(first.completedAt) << "nothing is left to take back of the other one";
}

TEST_F(TasksUndoTest, ATaskThatRepeatsIsCompletedAgainWithAnotherCopy) {
    CDTask& plants = addTask("Water plants every week 2026-03-10");
    CDTask& first = addTask("First 2026-03-20");
    show(Place::Kind::allTasks);
    const std::string before = stateOf(plants);
    pressOn(plants, Qt::Key_Space);
    const std::string after = stateOf(plants);
    ASSERT_NE(after, before);
    ASSERT_EQ(context().count<CDTask>(), 3U);
    pressOn(first, Qt::Key_2);
    undo();
    undo();
    ASSERT_EQ(stateOf(plants), before);
    ASSERT_EQ(context().count<CDTask>(), 2U);

    redo();
    EXPECT_EQ(stateOf(plants), after);
    EXPECT_EQ(context().count<CDTask>(), 3U);
    EXPECT_EQ(offer(), "Completed “Water plants”");
    EXPECT_EQ(first.priority, 4) << "one step at a time";
    redo();
    EXPECT_EQ(first.priority, 2);
    EXPECT_FALSE(context().hasChanges()) << "saved";
    undo();
    undo();
    EXPECT_EQ(stateOf(plants), before);
    EXPECT_EQ(context().count<CDTask>(), 2U) << "its new copy went";

    environment->tasks().setDue(
        plants,
        TaskDue{.date = *Instant::parseISO("2026-04-01T00:00:00Z")},
        environment->calendar());
    context().save();
    redo();
    EXPECT_EQ(undoSentence(), "“Water plants” was changed since and stays as it is");
    EXPECT_EQ(offer(), "");
    EXPECT_EQ(context().count<CDTask>(), 2U);
    redo();
    EXPECT_EQ(first.priority, 4) << "nothing is done again past it";
}

TEST_F(TasksUndoTest, WhatIsTakenBackUnseenIsTold) {
    CDTask& doors = addTask("Fit doors");
    CDTask& other = addTask("Other");
    show(Place::Kind::inbox);
    list.selectTask(*doors.id);
    press(Qt::Key_Return);
    auto& notes = *page.detail().findChild<QWidget*>("taskDetails");
    notes.setFocus();
    QTest::keyClicks(&notes, "Three of them");
    page.flush();
    list.setFocus();
    undo();
    EXPECT_EQ(doors.details.valueOr(""), "");
    EXPECT_EQ(undoSentence(), "") << "the panel shows it";
    redo();
    ASSERT_EQ(doors.details, "Three of them");
    list.selectTask(*other.id);
    undo();
    EXPECT_EQ(doors.details.valueOr(""), "");
    EXPECT_EQ(undoSentence(), "The notes of “Fit doors” are as they were");
    EXPECT_TRUE(page.findChild<QLabel*>("undoSentence")->isVisible());
    redo();
    EXPECT_EQ(undoSentence(), "The notes of “Fit doors” are changed again");
}

TEST_F(TasksUndoTest, WordsThatWereNotMeantLeaveNoSteps) {
    CDTask& task = addTask("Fit doors");
    show(Place::Kind::inbox);
    pressOn(task, Qt::Key_2);
    press(Qt::Key_Return);
    QWidget& title = *QApplication::focusWidget();
    QTest::keyClicks(&title, " now");
    page.flush();  // as after a pause
    QTest::keyClicks(&title, " or never");
    page.flush();
    ASSERT_EQ(task.title, "Fit doors now or never");
    QTest::keyClick(&title, Qt::Key_Escape);
    ASSERT_EQ(task.title, "Fit doors");
    undo();
    EXPECT_EQ(task.title, "Fit doors");
    EXPECT_EQ(task.priority, 4) << "what was done before";

    auto& notes = *page.detail().findChild<QWidget*>("taskDetails");
    list.setFocus();
    press(Qt::Key_3);
    ASSERT_EQ(task.priority, 3);
    notes.setFocus();
    QTest::keyClick(&notes, Qt::Key_X);
    page.flush();
    ASSERT_EQ(task.details, "x");
    for (int times = 0; times < 2; ++times) {
        QTest::keyClick(&notes, Qt::Key_Z, Qt::ControlModifier);
    }
    EXPECT_EQ(task.details.valueOr(""), "") << "by the field itself";
    EXPECT_EQ(task.priority, 4) << "and then what was done before";
}

TEST_F(TasksUndoTest, AFieldWithNothingOfItsOwnLeavesTheKeysToTheTasks) {
    const auto key = [](QWidget& field, Qt::KeyboardModifiers with) {
        QTest::keyClick(&field, Qt::Key_Z, with);
    };
    CDTask& task = addTask("Order hinges");
    show(Place::Kind::inbox);
    pressOn(task, Qt::Key_3);
    QWidget& bar = *page.listPage().quickAdd().focusProxy();
    bar.setFocus();
    key(bar, Qt::ControlModifier);
    EXPECT_EQ(task.priority, 4) << "nothing was typed yet";
    QTest::keyClicks(&bar, "Fit doors");
    QTest::keyClick(&bar, Qt::Key_Return);
    ASSERT_EQ(context().count<CDTask>(), 2U);
    key(bar, Qt::ControlModifier);
    EXPECT_EQ(context().count<CDTask>(), 1U);
    key(bar, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(context().count<CDTask>(), 2U);
    page.beginTask("Oil them");
    key(bar, Qt::ControlModifier);
    EXPECT_EQ(context().count<CDTask>(), 2U) << "a sentence is there";

    list.setFocus();
    press(Qt::Key_Home);  // no Control key is down any more
    pressOn(task, Qt::Key_2);
    press(Qt::Key_Return);
    for (const char* const name : {"taskTitle", "taskDetails", "addLabel"}) {
        auto& field = *page.detail().findChild<QWidget*>(name);
        field.setFocus();
        key(field, Qt::ControlModifier);
        EXPECT_EQ(task.priority, 4) << name;
        key(field, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(task.priority, 2) << name;
    }
    auto& title = *page.detail().findChild<QWidget*>("taskTitle");
    title.setFocus();
    QTest::keyClicks(&title, "!");
    key(title, Qt::ControlModifier);
    EXPECT_EQ(task.priority, 2) << "it has words to take back itself";
}

}  // namespace
}  // namespace tesserine::app
