#include "app/tasks/TasksPage.h"

#include "app/look/EmptyState.h"
#include "app/tasks/CalendarGrid.h"
#include "app/tasks/CalendarPage.h"
#include "app/tasks/GrowingText.h"
#include "app/tasks/LabelsField.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TasksPageFixture.h"
#include "app/tasks/TickButton.h"
#include "app/tasks/WhenPopup.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTextEdit>

#include <algorithm>
#include <filesystem>

namespace tesserine::app {
namespace {

using TasksPageTest = test::TasksPageFixture;

TEST_F(TasksPageTest, AClickOnTheCircleCompletesAndUndoBringsBack) {
    CDTask& task = addTask("Plan the year");
    addTask("Other");
    show(Place::Kind::inbox);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, circleOf(task));
    EXPECT_EQ(titles(), "Other");
    EXPECT_EQ(undoSentence(), "Completed “Plan the year”");
    QTest::mouseClick(page.findChild<QPushButton*>("undo"), Qt::LeftButton);
    EXPECT_EQ(titles(), "Plan the year | Other");
    EXPECT_FALSE(page.findChild<QWidget*>("undoBar")->isVisible());
}

TEST_F(TasksPageTest, TheKeyForUndoBringsBackWhatWasCompletedLast) {
    addTask("a");
    addTask("b every day 2026-03-12");
    show(Place::Kind::inbox);
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    const auto labels = page.detail().findChild<EmptyState*>()->findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(
        labels, [](const QLabel* label) { return label->text() == "2 tasks selected"; }));
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(titles(), "b") << "that one moved on";
    QTest::keyClick(&list, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(titles(), "a | b");
    EXPECT_FALSE(page.findChild<QWidget*>("undoBar")->isVisible());
    QTest::keyClick(&list, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(titles(), "a | b") << "once";

    // Where words are typed it takes back those.
    QTest::keyClick(&list, Qt::Key_Space);
    auto* const field = page.findChild<QLineEdit*>("addSubtask");
    field->setText("x");
    field->setFocus();
    QTest::keyClicks(field, "y");
    QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(page.findChild<QWidget*>("undoBar")->isVisible());
}

TEST_F(TasksPageTest, TheTickIsDrawnBeforeTheLineGoes) {
    environment->preferences().set("tesserine.reduceMotion", false);
    CDTask& task = addTask("Plan");
    show(Place::Kind::inbox);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, circleOf(task));
    EXPECT_TRUE(task.completedAt) << "done at once, whatever is drawn";
    EXPECT_EQ(titles(), "Plan");
    EXPECT_TRUE(waitUntil([&] { return titles().empty(); }));
}

TEST_F(TasksPageTest, ActsOnAllThatIsSelected) {
    const CDTask& a = addTask("a");
    const CDTask& b = addTask("b");
    const CDTask& c = addTask("c");
    show(Place::Kind::inbox);
    list.selectTask(*a.id);
    QTest::keyClick(&list, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&list, Qt::Key_2);
    EXPECT_EQ(a.priority, 2);
    EXPECT_EQ(b.priority, 2);
    EXPECT_EQ(c.priority, 4);

    QTest::keyClick(&list, Qt::Key_D);
    auto* const popup = page.findChild<WhenPopup*>();
    ASSERT_NE(popup, nullptr);
    QTest::keyClicks(popup->focusWidget(), "next friday 3pm");
    QTest::keyClick(popup->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(b.dueDate->iso(), "2026-03-27T15:00:00.000Z");
    EXPECT_EQ(a.dueDate, b.dueDate);

    QTest::keyClick(&list, Qt::Key_Delete);
    auto* const question = page.findChild<QMessageBox*>("deleteTasks");
    ASSERT_NE(question, nullptr);
    ASSERT_EQ(question->defaultButton(), question->button(QMessageBox::Cancel)) << "of a Return";
    question->defaultButton()->click();
    EXPECT_EQ(titles(), "a | b | c");
    settle();
    QApplication::setActiveWindow(&page);
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(titles(), "c");
    EXPECT_EQ(undoSentence(), "Completed 2 tasks");
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(titles(), "") << "the next one was selected";
}

TEST_F(TasksPageTest, TheTaskBesideTheRemindersIsTheChosenOne) {
    CDTask& first = addTask("First");
    CDTask& second = addTask("Second");
    CDNote& note = addNote("Note", "");
    environment->tasks().setReminder(first, Instant::parseISO("2026-03-15T08:00:00Z"));
    environment->tasks().setReminder(second, Instant::parseISO("2026-03-15T09:00:00Z"));
    environment->notes().setReminder(note, Instant::parseISO("2026-03-15T10:00:00Z"));
    context().save();
    show(Place::Kind::reminders);
    auto& reminders = *page.findChild<QListView*>("reminderList");
    reminders.setFocus();
    reminders.setCurrentIndex(reminders.model()->index(1, 0));
    EXPECT_TRUE(page.detail().isHidden()) << "until one is opened";
    QTest::keyClick(&reminders, Qt::Key_Return);
    EXPECT_EQ(page.detail().task(), *first.id);
    QTest::keyClick(&reminders, Qt::Key_Down);
    EXPECT_EQ(page.detail().task(), *second.id);
    QTest::keyClick(&reminders, Qt::Key_Down);
    EXPECT_EQ(page.detail().task(), std::nullopt) << "it is a note's";
    QTest::keyClick(&reminders, Qt::Key_Up);
    environment->tasks().setReminder(second, {});
    context().save();
    EXPECT_EQ(page.detail().task(), *second.id) << "nobody has chosen another one";
}

TEST_F(TasksPageTest, TheNextTaskTakesThePlaceOfOneThatGoes) {
    const CDTask& first = addTask("First tomorrow");
    const CDTask& second = addTask("Second tomorrow");
    addTask("Third tomorrow");
    addTask("Fourth in 2 days");
    show(Place::Kind::upcoming);
    const auto chosen = [&] { return page.detail().findChild<QPlainTextEdit*>("taskTitle"); };
    list.selectTask(*second.id);
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(chosen()->toPlainText(), "Third") << "not that above";
    list.selectTask(*first.id);
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(chosen()->toPlainText(), "Third") << "not the heading above";
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(chosen()->toPlainText(), "Fourth") << "beyond the heading below";
    addTask("Zeroth tomorrow");
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(chosen()->toPlainText(), "Zeroth") << "there is none below";
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_EQ(titles(), "");

    CDTask& plan = addTask("Plan in 3 days");
    const CDTask& part = environment->tasks().create(context(), {.title = "Part", .parent = &plan});
    addTask("Behind in 3 days");
    model().setExpanded(*plan.id, true);
    list.selectTask(*part.id);
    model().setExpanded(*plan.id, false);
    EXPECT_EQ(chosen()->toPlainText(), "Plan") << "what it was folded into";
}

TEST_F(TasksPageTest, ATaskThatIsChangedBesideTheListStaysThereWhenItLeavesTheList) {
    CDTask& task = addTask("Label jar today @errands");
    CDTask& next = addTask("Next jar today @errands");
    const Uuid label = *task.labels.all().front()->id;
    show(Place::Kind::today);
    list.selectTask(*task.id);
    QTest::mouseClick(page.detail().findChild<QPushButton*>("Duedate"), Qt::LeftButton);
    QWidget& words = *page.findChild<WhenPopup*>()->focusWidget();
    QTest::keyClicks(&words, "in 3 days");
    QTest::keyClick(&words, Qt::Key_Return);
    settle();
    EXPECT_EQ(titles(), "Today, Saturday 14 March | Next jar");
    EXPECT_EQ(page.detail().task(), *task.id);
    EXPECT_TRUE(list.selectedTasks().empty()) << "no key is meant for the next one";
    const QPoint line = list.visualRect(model().indexOf(*next.id)).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, line);
    EXPECT_EQ(page.detail().task(), *next.id) << "chosen";

    page.showPlace({.kind = Place::Kind::label, .id = label});
    list.setFocus();
    list.selectTask(*task.id);
    QTest::mouseClick(
        page.findChild<LabelsField*>()->findChild<QAbstractButton*>(), Qt::LeftButton);
    settle();
    EXPECT_EQ(titles(), "Next jar");
    EXPECT_EQ(page.detail().task(), *task.id);
    EXPECT_TRUE(list.selectedTasks().empty());
    EXPECT_EQ(page.editedTask(), *task.id) << "the cross that went leaves the keys here";

    show(Place::Kind::inbox);
    list.selectTask(*task.id);
    auto* const circle = page.detail().findChild<TickButton*>();
    QTest::mouseClick(circle, Qt::LeftButton);
    EXPECT_EQ(titles(), "Next jar");
    QTest::mouseClick(circle, Qt::LeftButton);
    EXPECT_FALSE(task.completedAt) << "a second click is about the same task";
    EXPECT_FALSE(next.completedAt);
}

TEST_F(TasksPageTest, ASentenceWithoutEnterIsThereAtTheNextStart) {
    const auto sentenceOf = [](const TasksPage& shown) {
        return shown.listPage().quickAdd().findChild<QTextEdit*>()->toPlainText().toStdString();
    };
    const auto atNextStart = [&] {
        EXPECT_TRUE(page.flush());
        Commands otherCommands(environment->preferences());
        return sentenceOf(TasksPage(*environment, otherCommands));
    };
    show(Place::Kind::inbox);
    page.beginTask("Ask Petra tomorrow #Home");
    EXPECT_EQ(atNextStart(), "Ask Petra tomorrow #Home");
    using std::filesystem::perms;
    const auto mode = std::filesystem::status(folder / "preferences.json").permissions();
    EXPECT_EQ(mode, perms::owner_read | perms::owner_write) << "it is private";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_EQ(sentenceOf(page), "");
    EXPECT_EQ(atNextStart(), "") << "a task was made of it";
}

TEST_F(TasksPageTest, KeysLeadOverHeadings) {
    for (int day = 1; day <= 20; ++day) {
        addTask("Task " + std::to_string(day) + " in " + std::to_string(day) + " days");
        addTask("Other " + std::to_string(day) + " in " + std::to_string(day) + " days");
    }
    show(Place::Kind::upcoming);
    list.selectTask(model().at(1).id);
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(&list, key);
        EXPECT_EQ(list.selectedTasks().size(), 1U);
        return list.currentIndex().row();
    };
    EXPECT_EQ(press(Qt::Key_End), model().rowCount() - 1);
    EXPECT_EQ(press(Qt::Key_Home), 1);
    EXPECT_EQ(list.verticalScrollBar()->value(), 0) << "its heading is seen";
    EXPECT_EQ(press(Qt::Key_Up), 1);
    EXPECT_EQ(press(Qt::Key_Down), 2);
    EXPECT_EQ(press(Qt::Key_Down), 4);
    EXPECT_EQ(press(Qt::Key_Up), 2);
    for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_PageUp}) {
        const int before = list.currentIndex().row();
        const int after = press(key);
        EXPECT_EQ(after > before, key == Qt::Key_PageDown) << after;
    }
}

TEST_F(TasksPageTest, DraggedTasksTakeTheirNewPlace) {
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
        a,
        TaskDue{.date = *Instant::parseISO("2026-03-16T08:00:00Z"), .hasTime = true},
        environment->calendar());
    environment->tasks().setDue(
        b, TaskDue{.date = *Instant::parseISO("2026-03-18T00:00:00Z")}, environment->calendar());
    context().save();
    show(Place::Kind::upcoming);
    ASSERT_EQ(titles(), "Monday 16 March | a | Wednesday 18 March | b");
    drop({*a.id}, 3, true);
    EXPECT_EQ(titles(), "Wednesday 18 March | b | a");
    EXPECT_EQ(a.dueDate->iso(), "2026-03-18T08:00:00.000Z") << "its time is kept";
}

TEST_F(TasksPageTest, TheBarAddsToTheListThatIsShown) {
    show(Place::Kind::today);
    EXPECT_TRUE(page.listPage().findChild<EmptyState*>()->isVisible());
    page.beginTask("Water plants");
    QTest::keyClick(page.listPage().quickAdd().focusProxy(), Qt::Key_Return);
    EXPECT_EQ(titles(), "Today, Saturday 14 March | Water plants");
    EXPECT_EQ(list.selectedTasks().size(), 1U) << "what was added is at hand";
    EXPECT_FALSE(page.listPage().findChild<EmptyState*>()->isVisible());

    CDProject& garden = environment->projects().create(context(), "Garden");
    context().save();
    page.showPlace({.kind = Place::Kind::project, .id = *garden.id});
    page.beginTask("Rake leaves");
    QTest::keyClick(page.listPage().quickAdd().focusProxy(), Qt::Key_Return);
    EXPECT_EQ(titles(), "Rake leaves");
    EXPECT_EQ(garden.tasks.count(), 1U);
}

TEST_F(TasksPageTest, TheTaskBesideTheListTellsAndTakesEverything) {
    CDTask& task = addTask("Plan the trip tomorrow 9am #Travel @people");
    CDNote& note = addNote("Lisbon");
    task.linkedNote = &note;
    context().save();
    show(Place::Kind::upcoming);
    list.selectTask(*task.id);
    EXPECT_EQ(field("Duedate"), "Tomorrow, Sunday 15 March at 09:00");
    EXPECT_EQ(field("Repetition"), "Does not repeat");
    EXPECT_EQ(field("Reminder"), "No reminder");
    EXPECT_EQ(field("Project"), "Travel");
    EXPECT_EQ(field("Linkednote"), "Lisbon");

    QTest::keyClick(&list, Qt::Key_Return);
    auto* const title = page.findChild<GrowingText*>("taskTitle");
    ASSERT_TRUE(title->hasFocus());
    QTest::keyClicks(title, " to Lisbon");
    EXPECT_EQ(task.title, "Plan the trip") << "not at every key";
    QTest::keyClick(title, Qt::Key_Return);
    EXPECT_EQ(task.title, "Plan the trip to Lisbon");
    auto* const details = page.findChild<GrowingText*>("taskDetails");
    ASSERT_TRUE(details->hasFocus());
    QTest::keyClicks(details, "Ask Jo");

    auto* const label = page.findChild<QLineEdit*>("addLabel");
    label->setFocus();
    EXPECT_EQ(task.details, "Ask Jo") << "saved when the field is left";
    QTest::keyClicks(label, "@summer");
    QTest::keyClick(label, Qt::Key_Return);
    EXPECT_EQ(page.findChild<LabelsField*>()->labels(), (QStringList{"people", "summer"}));
    EXPECT_EQ(task.labels.count(), 2U);

    auto* const subtask = page.findChild<QLineEdit*>("addSubtask");
    for (const char* const words : {"Flight", "Rooms"}) {
        QTest::keyClicks(subtask, words);
        QTest::keyClick(subtask, Qt::Key_Return);
    }
    EXPECT_EQ(task.subtasks.count(), 2U);
    EXPECT_FALSE(context().hasChanges());

    std::optional<Uuid> chosen;
    QObject::connect(&page, &TasksPage::noteChosen, &page, [&](const Uuid& id) { chosen = id; });
    page.findChild<QPushButton*>("Linkednote")->click();
    EXPECT_EQ(chosen, *note.id);
}

TEST_F(TasksPageTest, AfterMidnightTodayTakesNewTasksForTheNewDay) {
    show(Place::Kind::today);
    clock.advance(std::chrono::hours(15));
    environment->refreshCalendar();
    page.beginTask("Buy milk");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(titles(), "Today, Sunday 15 March | Buy milk");
}

TEST_F(TasksPageTest, WhatIsAddedGoesToTheProjectOrLabelThatWasRenamedMeanwhile) {
    CDTask& first = addTask("First #Work @phone");
    CDProject& project = *first.project.get();
    CDTag& label = *first.labels.all().front();
    const auto add = [&](const char* sentence) {
        page.beginTask(sentence);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    };
    page.showPlace({.kind = Place::Kind::project, .id = *project.id});
    page.show();
    QApplication::setActiveWindow(&page);
    environment->projects().rename(context(), project, "Office");
    context().save();
    add("Second");
    EXPECT_EQ(titles(), "First | Second");
    EXPECT_EQ(page.findChild<QLabel*>("taskListTitle")->text(), "Office");

    page.showPlace({.kind = Place::Kind::label, .id = *label.id});
    environment->tags().rename(context(), label, "calls");
    context().save();
    add("Third");
    EXPECT_EQ(titles(), "First | Third");
    EXPECT_EQ(environment->projects().all(context()).size(), 2U) << "the Inbox and this one";
}

TEST_F(TasksPageTest, EscapeLeadsFromATaskBackToItsList) {
    CDTask& task = addTask("Call Ana today");
    for (const auto kind : {Place::Kind::inbox, Place::Kind::calendar}) {
        show(kind);
        page.showPlace({.kind = kind});
        page.focusPage();
        const QWidget* const before = QApplication::focusWidget();
        page.detail().showTask(task.id.get());
        page.detail().show();
        page.detail().editTitle();
        QTest::keyClicks(QApplication::focusWidget(), "!");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        EXPECT_EQ(QApplication::focusWidget(), before);
    }
    EXPECT_EQ(task.title, "Call Ana") << "as it was";
}

TEST_F(TasksPageTest, AnotherPlaceLetsGoOfTheTaskThatWasChosen) {
    CDTask& task = addTask("Call Ana today");
    show(Place::Kind::inbox);
    list.selectTask(*task.id);
    auto* const title = page.findChild<GrowingText*>("taskTitle");
    EXPECT_EQ(title->toPlainText(), "Call Ana");
    title->setFocus();
    title->moveCursor(QTextCursor::End);
    QTest::keyClicks(title, " and Bo");
    for (const auto kind :
         {Place::Kind::completed, Place::Kind::calendar, Place::Kind::reminders}) {
        page.showPlace({.kind = kind});
        EXPECT_EQ(title->toPlainText(), "");
        EXPECT_FALSE(page.detail().isVisible());
        show(Place::Kind::inbox);
        list.selectTask(*task.id);
    }
    EXPECT_EQ(task.title, "Call Ana and Bo") << "what was typed is saved first";
}

TEST_F(TasksPageTest, TheTaskOfTheCalendarStaysWhateverTheListBehindItChooses) {
    CDTask& hidden = addTask("Hidden");
    addTask("Next");
    const CDTask& shown = addTask("Shown today");
    show(Place::Kind::inbox);
    list.selectTask(*hidden.id);
    page.showPlace({.kind = Place::Kind::calendar});
    page.calendarPage().grid().choose(*shown.id);
    environment->tasks().remove(context(), hidden);
    context().save();
    settle();
    environment->preferences().set("tesserine.firstWeekday", 1);
    environment->refreshCalendar();  // every list is read anew
    settle();
    EXPECT_EQ(page.detail().task(), shown.id.get());
}

TEST_F(TasksPageTest, ADoubleClickOnTheCircleTicksOneTask) {
    CDTask& task = addTask("First");
    addTask("Second");
    show(Place::Kind::inbox);
    const QPoint circle = circleOf(task);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, circle);
    QMouseEvent second(
        QEvent::MouseButtonDblClick, circle, circle, Qt::LeftButton, Qt::LeftButton, {});
    QApplication::sendEvent(list.viewport(), &second);
    EXPECT_EQ(titles(), "Second");
}

TEST_F(TasksPageTest, WhatIsAddedElsewhereSaysWhere) {
    show(Place::Kind::today);
    const auto& line = *page.findChild<QWidget*>("undoBar");
    const auto add = [&](const char* sentence) {
        page.beginTask(sentence);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    };
    add("Water plants");
    EXPECT_FALSE(line.isVisible()) << "one sees it";
    add("Call Ana tomorrow 9am #Work");
    EXPECT_TRUE(line.isVisible());
    EXPECT_EQ(undoSentence(), "Added “Call Ana” to Work · Tomorrow 09:00");
    EXPECT_FALSE(page.findChild<QPushButton*>("undo")->isVisible());
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_TRUE(page.findChild<QPushButton*>("undo")->isVisible()) << "that can be undone";
}

TEST_F(TasksPageTest, EveryPlaceBeginsAtItsTop) {
    for (int i = 0; i < 60; ++i) {
        addTask("Task " + std::to_string(i) + " today");
    }
    show(Place::Kind::inbox);
    list.scrollToBottom();
    EXPECT_GT(list.verticalScrollBar()->value(), 0);
    show(Place::Kind::today);
    EXPECT_EQ(list.verticalScrollBar()->value(), 0);
}

TEST_F(TasksPageTest, LongNamesDoNotWidenTheTaskBesideTheList) {
    CDTask& brief = addTask("Call #Home @phone");
    const std::string name(150, 'n');
    CDTask& wide = addTask("Write #" + name + " @" + name);
    show(Place::Kind::allTasks);
    const auto leastWidth = [this](const CDTask& task) {
        list.selectTask(*task.id);
        settle();
        return page.detail().findChild<QScrollArea*>()->widget()->minimumSizeHint().width();
    };
    EXPECT_EQ(leastWidth(wide), leastWidth(brief));
}

TEST_F(TasksPageTest, AnEmptyListTakesEveryKey) {
    show(Place::Kind::inbox);
    QApplication::clipboard()->clear();
    for (int key = Qt::Key_A; key <= Qt::Key_Z; ++key) {
        QTest::keyClick(&list, static_cast<Qt::Key>(key));
        QTest::keyClick(&list, static_cast<Qt::Key>(key), Qt::ControlModifier);
    }
    for (const auto key :
         {Qt::Key_Space,
          Qt::Key_Return,
          Qt::Key_Delete,
          Qt::Key_F2,
          Qt::Key_Home,
          Qt::Key_End,
          Qt::Key_Up,
          Qt::Key_Down,
          Qt::Key_Left,
          Qt::Key_Right,
          Qt::Key_PageUp,
          Qt::Key_PageDown}) {
        QTest::keyClick(&list, key);
    }
    EXPECT_EQ(titles(), "");
    EXPECT_TRUE(QApplication::clipboard()->text().isEmpty());
}

}  // namespace
}  // namespace tesserine::app
