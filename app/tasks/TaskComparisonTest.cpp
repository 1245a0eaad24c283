#include "app/tasks/TaskComparison.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/TaskDetail.h"

#include <QLabel>
#include <QPushButton>

namespace tesserine::app {
namespace {

class TaskComparisonTest : public test::WindowFixture {
public:
    TaskComparisonTest() {
        CDTask& stored = addTask("Call Ada tomorrow p2");
        task = *stored.id;
        TaskConflicts(context()).keep(
            stored,
            {{"title", JSONValue(std::string("Call Bob"))},
             {"priority", JSONValue(1.0)},
             {"updated_at", JSONValue(std::string("2026-03-14T08:30:00Z"))}});
        context().save();
        detail = std::make_unique<TaskDetail>(*environment);
        detail->resize(420, 600);
        detail->showTask(task);
        detail->show();
    }
    void TearDown() override { detail.reset(); }

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
    void choose(const char* button) {
        compare().findChild<QPushButton*>(button)->click();
        settle();
    }

    Uuid task;
    std::unique_ptr<TaskDetail> detail;
};

TEST_F(TaskComparisonTest, BothVersionsStandSideBySideAndTheOtherOneCanBeTaken) {
    ASSERT_TRUE(notice().isVisible());
    const std::string names = namesOf(compare());
    for (const char* line :
         {"Title: Call Ada; Title: Call Bob;", "Priority: Priority 2; Priority: Priority 1;"}) {
        EXPECT_NE(names.find(line), std::string::npos) << line << " in " << names;
    }
    detail->findChild<TaskComparison*>()->close();
    settle();
    EXPECT_TRUE(notice().isVisible()) << "nothing was decided";

    choose("useOtherVersion");
    EXPECT_EQ(context().find<CDTask>(task)->title, "Call Bob");
    EXPECT_FALSE(notice().isVisible());
    EXPECT_EQ(detail->findChild<TaskComparison*>(), nullptr);
}

TEST_F(TaskComparisonTest, ThisVersionCanBeKept) {
    choose("keepThisVersion");
    EXPECT_EQ(context().find<CDTask>(task)->title, "Call Ada");
    EXPECT_FALSE(notice().isVisible());
    EXPECT_FALSE(TaskConflicts(context()).of(task).has_value());
}

TEST_F(TaskComparisonTest, ATaskWithoutAConflictHasNoNotice) {
    detail->showTask(*addTask("Buy milk").id);
    EXPECT_FALSE(notice().isVisible());
}

}  // namespace
}  // namespace tesserine::app
