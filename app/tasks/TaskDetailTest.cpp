#include "app/tasks/TaskDetail.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/GrowingText.h"
#include "app/tasks/LabelsField.h"
#include "app/tasks/SubtaskList.h"
#include "core/tasks/TaskSnapshot.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QToolButton>

namespace tesserine::app {
namespace {

/// Saturday, 14 March 2026, nine in the morning.
class TaskDetailTest : public test::WindowFixture {
public:
    TaskDetailTest() {
        detail.resize(400, 600);
        detail.show();
        QApplication::setActiveWindow(&detail);
    }
    QPushButton& field(const char* name) { return *detail.findChild<QPushButton*>(name); }
    std::string shown(const char* name) { return field(name).text().toStdString(); }
    /// Presses a button of the pop-up that a field opens.
    void pick(const char* name, const QString& answer) {
        field(name).click();
        for (QWidget* popup : detail.findChildren<QWidget*>(QRegularExpression("Popup$"))) {
            for (auto* button : popup->findChildren<QPushButton*>()) {
                if (button->text().startsWith(answer)) return button->click();
            }
        }
        ADD_FAILURE() << "no answer " << answer.toStdString();
    }
    std::vector<QLineEdit*> subtaskTitles() {
        std::vector<QLineEdit*> titles;
        for (auto* title : detail.findChild<SubtaskList*>()->findChildren<QLineEdit*>()) {
            if (title->accessibleName() == "Subtask" && title->isVisible()) titles.push_back(title);
        }
        return titles;
    }

    TaskDetail detail{*environment};
};

TEST_F(TaskDetailTest, DatesRepetitionAndReminderAreSetAndTakenAway) {
    CDTask& task = addTask("Water plants");
    detail.showTask(*task.id);
    pick("Duedate", "Tomorrow");
    EXPECT_EQ(task.dueDate->iso(), "2026-03-15T00:00:00.000Z");
    EXPECT_EQ(shown("Duedate"), "Tomorrow, Sunday 15 March");
    settle();
    pick("Repetition", "Every month");
    EXPECT_EQ(task.recurrenceRule.valueOr(""), "unit=month;interval=1;dayOfMonth=15");
    EXPECT_EQ(shown("Repetition"), "Every month on the 15th");
    settle();
    pick("Reminder", "On the morning it is due");
    EXPECT_EQ(task.reminderAt->iso(), "2026-03-15T09:00:00.000Z");
    settle();
    pick("Duedate", "No date");
    EXPECT_FALSE(task.dueDate);
    EXPECT_EQ(shown("Duedate"), "No date");
    EXPECT_TRUE(task.reminderAt) << "it stands for itself";
    settle();
    pick("Reminder", "No reminder");
    EXPECT_FALSE(task.reminderAt);
    settle();
    pick("Repetition", "Does not repeat");
    EXPECT_EQ(task.recurrenceRule.valueOr(""), "");
    EXPECT_FALSE(context().hasChanges());
    settle();
}

TEST_F(TaskDetailTest, SubtasksAreAddedRenamedTickedAndDeleted) {
    CDTask& task = addTask("Move");
    detail.showTask(*task.id);
    auto& adding = *detail.findChild<QLineEdit*>("addSubtask");
    for (const char* words : {"Boxes", "  ", "Van"}) {
        adding.setFocus();
        adding.setText(words);
        QTest::keyClick(&adding, Qt::Key_Return);
    }
    ASSERT_EQ(subtaskTitles().size(), 2U) << "nothing is no subtask";

    // What is being typed stays while the task changes elsewhere.
    subtaskTitles()[1]->setFocus();
    QTest::keyClicks(subtaskTitles()[1], " hire");
    environment->tasks().setPriority(task, TaskPriority::p1);
    context().save();
    ASSERT_EQ(subtaskTitles().size(), 2U);
    EXPECT_EQ(subtaskTitles()[1]->text(), "Van hire");
    QTest::keyClick(subtaskTitles()[1], Qt::Key_Return);
    const auto titles = [&] {
        std::string text;
        for (const CDTask* subtask : subtasksInOrder(task)) {
            text += *subtask->title + (subtask->completedAt ? " done;" : ";");
        }
        return text;
    };
    EXPECT_EQ(titles(), "Boxes;Van hire;");

    const auto press = [&](const QString& name) {
        for (auto* button : detail.findChild<SubtaskList*>()->findChildren<QAbstractButton*>()) {
            if (button->accessibleName() == name && button->isVisible()) return button->click();
        }
        ADD_FAILURE() << "no button " << name.toStdString();
    };
    press("Complete “Boxes”");
    EXPECT_EQ(titles(), "Boxes done;Van hire;");
    press("Reopen “Boxes”");
    press("Delete subtask");
    EXPECT_EQ(titles(), "Van hire;");
    settle();
}

TEST_F(TaskDetailTest, WordsMeantForASubtaskThatGoesTickNoOther) {
    CDTask& task = addTask("Plan");
    CDTask& typed = environment->tasks().create(context(), {.title = "Typed", .parent = &task});
    const CDTask& next = environment->tasks().create(context(), {.title = "Next", .parent = &task});
    context().save();
    detail.showTask(*task.id);
    settle();
    subtaskTitles().front()->setFocus();
    environment->tasks().remove(context(), typed);
    context().save();
    QTest::keyClicks(QApplication::focusWidget(), "a b");
    EXPECT_TRUE(detail.flush());
    EXPECT_FALSE(next.completedAt);
    EXPECT_EQ(next.title.valueOr(""), "Next");
    EXPECT_EQ(task.subtasks.count(), 1U);
}

TEST_F(TaskDetailTest, SubtasksThatAreBeingTypedAreSavedBeforeAnythingElseIsShown) {
    CDTask& task = addTask("Move");
    CDTask& other = addTask("Read");
    environment->tasks().create(context(), {.title = "Van", .parent = &task});
    context().save();
    detail.showTask(*task.id);
    subtaskTitles()[0]->setFocus();
    QTest::keyClicks(subtaskTitles()[0], " hire");
    EXPECT_TRUE(detail.flush()) << "as on quitting, with the focus still there";
    auto& adding = *detail.findChild<QLineEdit*>("addSubtask");
    adding.setFocus();
    QTest::keyClicks(&adding, "Boxes");
    detail.showTask(*other.id);
    EXPECT_EQ(adding.text(), "");
    std::string titles;
    for (const CDTask* subtask : subtasksInOrder(task)) {
        titles += *subtask->title + ";";
    }
    EXPECT_EQ(titles, "Van hire;Boxes;");
    EXPECT_TRUE(subtasksInOrder(other).empty());
    settle();
}

TEST_F(TaskDetailTest, LabelsGoByAClickAndANoteIsUnlinked) {
    CDTask& task = addTask("Plan @home @garden");
    CDNote& note = addNote("Lisbon");
    task.linkedNote = &note;
    context().save();
    detail.showTask(*task.id);
    EXPECT_EQ(shown("Linkednote"), "Lisbon");
    const auto press = [&](const QString& name) {
        for (auto* button : detail.findChildren<QAbstractButton*>()) {
            if (button->accessibleName() == name && button->isVisible()) return button->click();
        }
        ADD_FAILURE() << "no button " << name.toStdString();
    };
    press("Remove the label garden");
    EXPECT_EQ(detail.findChild<LabelsField*>()->labels(), QStringList{"home"});
    EXPECT_EQ(task.labels.count(), 1U);
    auto& adding = *detail.findChild<QLineEdit*>("addLabel");
    adding.setText("HOME");
    QTest::keyClick(&adding, Qt::Key_Return);
    EXPECT_EQ(task.labels.count(), 1U) << "the same label in other letters";
    press("Do not link this note");
    EXPECT_EQ(shown("Linkednote"), "No linked note");
    EXPECT_EQ(task.linkedNote.get(), nullptr);
    EXPECT_FALSE(context().hasChanges());
    settle();
}

TEST_F(TaskDetailTest, ALabelIsShownWholeWhereThereIsRoom) {
    LabelsField field([] { return QStringList(); });
    field.resize(400, 100);
    field.show();
    for (const char* label : {"shop", "home", "phone", "garden", "iiii", "Wohnung"}) {
        field.setLabels({label});
        auto* const chip = field.findChildren<QAbstractButton*>().back();
        const auto beginning = [&](int width) {
            chip->resize(width, chip->sizeHint().height());
            return chip->grab().toImage().copy(0, 0, chip->sizeHint().width() - 24, chip->height());
        };
        EXPECT_EQ(beginning(chip->sizeHint().width()), beginning(300)) << label;
    }
}

TEST_F(TaskDetailTest, NotesThatAnotherProgramWritesMeanwhileAreKept) {
    struct Case {
        const char* before;
        const char* theirs;
        const char* both;
    };
    for (const auto& [before, theirs, both] : {
             Case{"call", "call, then mail", "call mine!, then mail"},
             Case{"call", "write", "call mine!\n\nwrite"},
             Case{"", "write", " mine!\n\nwrite"},
             Case{"call", "", "call mine!"},
         }) {
        CDTask& task = addTask("Call Ana");
        environment->tasks().setDetails(task, before);
        context().save();
        detail.showTask(*task.id);
        auto& notes = *detail.findChild<GrowingText*>("taskDetails");
        notes.setFocus();
        notes.moveCursor(QTextCursor::End);
        QTest::keyClicks(&notes, " mine");
        const auto elsewhere = environment->store().newBackgroundContext();
        environment->tasks().setDetails(*elsewhere->find<CDTask>(*task.id), theirs);
        elsewhere->save();
        settle();
        EXPECT_TRUE(detail.flush());
        QTest::keyClicks(&notes, "!");
        EXPECT_TRUE(detail.flush());
        EXPECT_EQ(task.details.valueOr(""), both);
    }
}

TEST_F(TaskDetailTest, WordsTypedIntoATaskThatIsDeletedElsewhereAreKeptInAnother) {
    const Uuid id = *addTask("Call Ana").id;
    detail.showTask(id);
    auto& notes = *detail.findChild<GrowingText*>("taskDetails");
    QTest::keyClicks(&notes, "about the roof");
    const auto elsewhere = environment->store().newBackgroundContext();
    environment->tasks().remove(*elsewhere, *elsewhere->find<CDTask>(id));
    elsewhere->save();
    ASSERT_TRUE(waitUntil([&] { return context().find<CDTask>(id) == nullptr; }));
    settle();
    EXPECT_TRUE(detail.flush());
    const auto tasks = context().fetch<CDTask>();
    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks.front()->title, "Call Ana");
    EXPECT_EQ(tasks.front()->details, "about the roof");
    EXPECT_NE(detail.findChild<QMessageBox*>("notice"), nullptr);
}

TEST_F(TaskDetailTest, ATitleThatIsTooLongIsNotLost) {
    CDTask& task = addTask("Short");
    detail.showTask(*task.id);
    auto& title = *detail.findChild<GrowingText*>("taskTitle");
    title.selectAll();
    title.insertPlainText(QString(static_cast<int>(TaskService::maximumTitleCharacters) + 1, 'x'));
    EXPECT_FALSE(detail.flush());
    EXPECT_NE(detail.findChild<QMessageBox*>("notice"), nullptr);
    EXPECT_EQ(task.title, "Short");
    EXPECT_GT(title.toPlainText().size(), 10'000) << "it can be shortened";
    title.selectAll();
    title.insertPlainText("Two\nlines");
    EXPECT_TRUE(detail.flush());
    EXPECT_EQ(task.title, "Two lines");
    settle();
}

TEST_F(TaskDetailTest, EscapePutsTheStoredTitleBack) {
    CDTask& task = addTask("Order banners");
    detail.showTask(*task.id);
    auto& title = *detail.findChild<GrowingText*>("taskTitle");
    const auto escape = [&] {
        QTest::keyClick(&title, Qt::Key_Escape);
        field("Duedate").setFocus();  // as the page takes the keys
    };
    detail.editTitle();
    QTest::keyClicks(&title, " today");
    escape();
    EXPECT_EQ(title.toPlainText(), "Order banners");
    EXPECT_EQ(task.title, "Order banners");

    detail.editTitle();
    QTest::keyClicks(&title, " today");
    emit title.settled();  // a pause
    ASSERT_EQ(task.title, "Order banners today");
    QTest::keyClicks(&title, " at noon");
    escape();
    EXPECT_EQ(title.toPlainText(), "Order banners");
    EXPECT_EQ(task.title, "Order banners");

    detail.editTitle();
    QTest::keyClicks(&title, " mine");
    environment->tasks().setTitle(task, "Theirs");
    context().save();
    escape();
    EXPECT_EQ(title.toPlainText(), "Theirs");
    EXPECT_EQ(task.title, "Theirs");
    EXPECT_FALSE(context().hasChanges());
}

}  // namespace
}  // namespace tesserine::app
