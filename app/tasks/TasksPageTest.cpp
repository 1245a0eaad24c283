#include "app/tasks/TasksPage.h"

#include "app/commands/Commands.h"
#include "app/look/EmptyState.h"
#include "app/state/WindowFixture.h"
#include "app/tasks/CalendarGrid.h"
#include "app/tasks/CalendarPage.h"
#include "app/tasks/GrowingText.h"
#include "app/tasks/LabelsField.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskListModel.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/WhenPopup.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include <algorithm>

namespace tesserine::app {
namespace {

class TasksPageTest : public test::WindowFixture {
public:
    TasksPageTest() {
        environment->preferences().set("tesserine.reduceMotion", true);
        page.resize(1000, 700);
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

    std::string undoSentence() {
        return page.findChild<QLabel*>("undoSentence")->text().toStdString();
    }
    /// The text that a field of the task beside the list shows.
    std::string field(const char* name) const {
        return page.detail().findChild<QPushButton*>(name)->text().toStdString();
    }

    Commands commands{environment->preferences()};
    TasksPage page{*environment, commands};
    TaskListView& list{page.listPage().list()};
};

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
        a, TaskDue{.date = *Instant::parseISO("2026-03-16T08:00:00Z"), .hasTime = true});
    environment->tasks().setDue(b, TaskDue{.date = *Instant::parseISO("2026-03-18T00:00:00Z")});
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
    EXPECT_EQ(task.title, "Call Ana!!") << "what was typed is saved";
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

TEST_F(TasksPageTest, ATaskCompletedElsewhereWhileItIsTypedInLeavesTheOthers) {
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

TEST_F(TasksPageTest, WordsTypedIntoATaskStayWhenItsProjectIsDeletedElsewhere) {
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

TEST_F(TasksPageTest, WordsMeantForATaskThatGoesAreNotTypedIntoTheNextOne) {
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

TEST_F(TasksPageTest, ATaskThatIsTypedIntoStaysOpenWhereverOthersPutIt) {
    const CDTask& next = addTask("Next today");
    CDTask& typed = addTask("Typed today !1");
    show(Place::Kind::today);
    list.selectTask(*typed.id);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClicks(QApplication::focusWidget(), " mine");
    environment->tasks().setDue(typed, TaskDue{.date = *Instant::parseISO("2026-03-20T00:00:00Z")});
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

TEST_F(TasksPageTest, AnswersAboutATaskThatGoesAreNotTakenForTheNextOne) {
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

TEST_F(TasksPageTest, WhatIsBeingTypedSurvivesChangesFromElsewhere) {
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
