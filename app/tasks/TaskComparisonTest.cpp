#include "app/tasks/TaskComparison.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskListModel.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace tesserine::app {
namespace {

class TaskComparisonTest : public test::WindowFixture {
public:
    TaskComparisonTest() {
        detail = std::make_unique<TaskDetail>(*environment);
        detail->resize(420, 600);
        beginAgain();
        detail->show();
    }
    void TearDown() override { detail.reset(); }

    void beginAgain() {
        for (CDTask* before : context().fetch<CDTask>()) {
            context().remove(*before);
        }
        CDTask& stored = addTask("Call Ada tomorrow p2 @Home");
        task = *stored.id;
        TaskConflicts(context()).keep(
            stored,
            {{"title", JSONValue(std::string("Call Bob"))},
             {"priority", JSONValue(1.0)},
             {"updated_at", JSONValue(std::string("2026-03-14T08:30:00Z"))}});
        context().save();
        detail->showTask(task);
    }

    QWidget& notice() { return *detail->findChild<QWidget*>("conflictNotice"); }
    /// Opens the comparison from the task.
    TaskComparison& compare() {
        notice().findChild<QPushButton*>()->click();
        return *detail->findChild<TaskComparison*>();
    }
    static std::string namesOf(QWidget& dialog) {
        std::string names;
        for (const QLabel* label : dialog.findChildren<QLabel*>()) {
            const std::string name = label->accessibleName().toStdString();
            if (!name.empty()) names += name + "; ";
        }
        return names;
    }
    std::string tasksOfLibrary() {
        std::string text;
        for (const CDTask* one : context().fetch<CDTask>({.sort = {{"title"}}})) {
            text += one->title.valueOr("") + " p" + std::to_string(one->priority.valueOr(0)) + " (";
            for (const CDTag* label : one->labels.all()) {
                text += label->name.valueOr("");
            }
            text += ") ";
        }
        return text;
    }
    void choose(const char* button) {
        compare().findChild<QPushButton*>(button)->click();
        settle();
    }

    Uuid task;
    std::unique_ptr<TaskDetail> detail;
};

TEST_F(TaskComparisonTest, BothVersionsStandSideBySideAndReturnDecidesNothing) {
    ASSERT_TRUE(notice().isVisible());
    TaskComparison& dialog = compare();
    const std::string names = namesOf(dialog);
    for (const char* line :
         {"Title: Call Bob; Title: Call Ada;", "Priority: Priority 1; Priority: Priority 2;"}) {
        EXPECT_NE(names.find(line), std::string::npos) << line << " in " << names;
    }
    QTest::keyClick(&dialog, Qt::Key_Return);
    settle();
    EXPECT_EQ(detail->findChild<TaskComparison*>(), nullptr);
    EXPECT_TRUE(notice().isVisible());
    EXPECT_TRUE(TaskConflicts(context()).of(task));
}

TEST_F(TaskComparisonTest, EachChoiceSettlesItAndOnlyWhatWasNotChosenGoes) {
    struct Case {
        const char* button;
        const char* tasks;
    };
    for (const auto& [button, tasks] :
         {Case{"keepMine", "Call Ada p2 (Home) "},
          Case{"useOther", "Call Bob p1 (Home) "},
          Case{"keepBoth", "Call Ada p2 (Home) Call Bob p1 (Home) "}}) {
        SCOPED_TRACE(button);
        choose(button);
        EXPECT_EQ(tasksOfLibrary(), tasks);
        EXPECT_FALSE(notice().isVisible());
        EXPECT_EQ(detail->findChild<TaskComparison*>(), nullptr);
        beginAgain();
    }
}

TEST_F(TaskComparisonTest, AVersionThatWasNotShownIsNeitherTakenNorLost) {
    TaskComparison& dialog = compare();
    context().find<CDTask>(task)->title = "Call Cid";  // as another device does it
    context().save();
    dialog.findChild<QPushButton*>("useOther")->click();
    settle();
    EXPECT_EQ(tasksOfLibrary(), "Call Cid p2 (Home) ");
    ASSERT_TRUE(notice().isVisible()) << "to be compared again";
    choose("useOther");
    EXPECT_EQ(tasksOfLibrary(), "Call Bob p1 (Home) ");
}

TEST_F(TaskComparisonTest, ItsLineInAListIsMarkedUntilItIsSettled) {
    TaskListModel model(*environment);
    model.setView(TaskView::inbox());
    const auto heard = [&] {
        return model.data(model.index(0), Qt::AccessibleTextRole).toString().toStdString();
    };
    EXPECT_NE(heard().find("changed on two devices"), std::string::npos) << heard();
    choose("keepMine");
    EXPECT_EQ(heard().find("changed on two devices"), std::string::npos) << heard();
}

TEST_F(TaskComparisonTest, ATaskWithoutAConflictHasNoNotice) {
    detail->showTask(*addTask("Buy milk").id);
    EXPECT_FALSE(notice().isVisible());
}

}  // namespace
}  // namespace tesserine::app
