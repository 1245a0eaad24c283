#include "app/commands/Commands.h"
#include "app/look/Theme.h"
#include "app/state/WindowFixture.h"
#include "app/tasks/CalendarPage.h"
#include "app/tasks/QuickAddBar.h"
#include "app/tasks/RecurrencePopup.h"
#include "app/tasks/TaskComparison.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TasksPage.h"
#include "app/tasks/TemplateForm.h"
#include "app/tasks/WhenPopup.h"
#include "app/testing/WidgetFaultsFixture.h"

#include <QApplication>
#include <QPushButton>

namespace tesserine::app {
namespace {

constexpr QSize smallScreen(900, 600);
constexpr QSize roomForTasks(690, 490);  // in a window of that size

constexpr const char* longTitle =
    "Prepare the tax return with every receipt of the last twelve months, Donaudampfschifffahrt";

class TasksLayoutTest : public test::WindowFixture {
public:
    TasksLayoutTest() {
        longTask =
            *addTask(std::string(longTitle) + " every month on the 3rd 9am #Work @paper p1").id;
        addTask("Call Ana today");
        TaskConflicts(context()).keep(
            *context().find<CDTask>(longTask),
            {{"title", JSONValue(std::string("Call Bob"))},
             {"details", JSONValue(std::string(longTitle))}});
        environment->taskTemplates().create(
            context(),
            {.name = longTitle, .title = "Pack", .labels = {"travel"}, .subtasks = {"Passport"}});
        context().save();
    }
    ~TasksLayoutTest() override { environment->waitForBackground(); }

    /// Shows each page of tasks, in a small window with a task opened beside the list.
    void forPages(const std::function<void(QWidget& page)>& judge) {
        Commands commands(environment->preferences());
        TasksPage page(*environment, commands);
        page.resize(roomForTasks);
        page.show();
        for (const auto kind :
             {Place::Kind::inbox,
              Place::Kind::today,
              Place::Kind::completed,
              Place::Kind::calendar,
              Place::Kind::reminders,
              Place::Kind::taskTemplates,
              Place::Kind::task}) {
            const Place place{.kind = kind, .id = longTask};
            SCOPED_TRACE(place.address());
            kind == Place::Kind::taskTemplates ? page.showTemplates() : page.showPlace(place);
            environment->waitForBackground();
            settle();
            judge(page);
        }
    }
    /// What comes up over the window.
    std::vector<std::unique_ptr<QWidget>> popups() {
        std::vector<std::unique_ptr<QWidget>> all;
        const Calendar& calendar = environment->calendar();
        const auto conflict = TaskConflicts(context()).of(longTask);
        all.emplace_back(WhenPopup::forDue(*environment, nullptr));
        all.emplace_back(WhenPopup::forReminder(*environment, {}, nullptr));
        all.push_back(std::make_unique<RecurrencePopup>(
            calendar, environment->now(), environment->now(), nullptr));
        all.push_back(std::make_unique<TaskComparison>(*environment, *conflict, nullptr));
        for (const auto& popup : all) {
            popup->setAttribute(Qt::WA_DeleteOnClose, false);
        }
        return all;
    }

    const Theme theme{*qApp};
    Uuid longTask;
};

TEST_F(TasksLayoutTest, NothingIsCutInASmallWindowWithLargeLettersInEitherDirection) {
    test::forReaders({1.0, 1.4}, [this](double scale) {
        // Large letters may need the room of the sidebar, which can be hidden.
        const QSize room = scale > 1 ? smallScreen : roomForTasks;
        forPages([&](QWidget& page) {
            EXPECT_EQ(test::layoutFaults(page), "");
            EXPECT_LE(page.minimumSizeHint().width(), room.width());
            EXPECT_LE(page.minimumSizeHint().height(), room.height());
        });
        for (const auto& popup : popups()) {
            SCOPED_TRACE(popup->metaObject()->className());
            popup->show();
            settle();
            EXPECT_EQ(test::layoutFaults(*popup), "");
            EXPECT_LE(popup->width(), smallScreen.width());
            EXPECT_LE(popup->height(), smallScreen.height());
        }
    });
}

TEST_F(TasksLayoutTest, ATemplateKeepsItsRoomBesideTheTaskThatIsMadeOfIt) {
    Commands commands(environment->preferences());
    TasksPage page(*environment, commands);
    page.resize(770, roomForTasks.height());  // in a window of 1,000 pixels
    page.show();
    page.showTemplates();
    settle();
    page.findChild<QPushButton*>("useTemplate")->click();
    settle();
    ASSERT_TRUE(page.findChild<TaskDetail*>()->isVisible());
    EXPECT_EQ(test::layoutFaults(page), "");
    EXPECT_EQ(page.width(), 770);
    const QWidget& form = *page.findChild<TemplateForm*>();
    EXPECT_LE(form.width(), form.parentWidget()->width());
}

TEST_F(TasksLayoutTest, EveryControlHasANameThatCanBeHeard) {
    forPages([](QWidget& page) { EXPECT_EQ(test::namelessControls(page), ""); });
    for (const auto& popup : popups()) {
        SCOPED_TRACE(popup->metaObject()->className());
        popup->show();
        settle();
        EXPECT_EQ(test::namelessControls(*popup), "");
    }
}

}  // namespace
}  // namespace tesserine::app
