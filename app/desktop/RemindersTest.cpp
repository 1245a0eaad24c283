#include "app/desktop/Reminders.h"

#include "app/desktop/DesktopFixture.h"
#include "app/desktop/PrivateBusFixture.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

using namespace std::chrono_literals;
using Texts = std::vector<std::string>;

class RemindersTest : public test::WindowFixture {
public:
    /// The next start of the program.
    void start() {
        reminders.emplace(*environment, notifier);
        QObject::connect(&*reminders, &Reminders::chosen, &*reminders, [this](const Place& place) {
            chosen.push_back(place.address());
        });
        reminders->start();
    }
    void stop() { reminders.reset(); }

    CDTask& taskAt(const std::string& title, Instant::Duration in) {
        CDTask& task = addTask(title);
        environment->tasks().setReminder(task, clock.now() + in);
        context().save();
        return task;
    }
    void advance(Instant::Duration by) {
        clock.advance(by);
        if (reminders) reminders->wake();
    }
    ::testing::AssertionResult shows(const Texts& expected) {
        if (waitUntil([&] { return desktop.texts() == expected; })) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << ::testing::PrintToString(desktop.texts());
    }
    void press(std::size_t number, const char* action) {
        emit desktop.ActionInvoked(desktop.shown[number].id, action);
    }

    test::PrivateBus bus;
    test::NotificationDesktop desktop{bus.connection("desktop")};
    Notifier notifier{bus.connection("program")};
    std::optional<Reminders> reminders;
    std::vector<std::string> chosen;
};

TEST_F(RemindersTest, AreShownInTheirMinuteOnceAndKnowTheirOwners) {
    CDTask& task = taskAt("Call <Ann>", 45s);
    CDNote& note = addNote("Plan", "<p>Of the year</p>");
    environment->notes().setReminder(note, clock.now() + 10min);
    context().save();
    start();
    EXPECT_TRUE(desktop.texts().empty());

    advance(46s);
    ASSERT_TRUE(shows({"Call <Ann>: Inbox"}));
    EXPECT_EQ(desktop.shown[0].hints["taskID"].toString().toStdString(), task.id->text());
    EXPECT_EQ(
        desktop.shown[0].actions,
        (QStringList{"default", "", "complete", "Complete", "open", "Open"}));
    advance(9min);
    advance(30s);
    ASSERT_TRUE(shows({"Call <Ann>: Inbox", "Plan: Of the year"}));
    EXPECT_EQ(desktop.shown[1].hints["noteID"].toString().toStdString(), note.id->text());
    EXPECT_EQ(desktop.shown[1].actions, (QStringList{"default", "", "open", "Open"}));
    advance(1h);
    EXPECT_EQ(desktop.shown.size(), 2U);
}

TEST_F(RemindersTest, OneInTheMiddleOfAMinuteIsShownAtItsBeginningAndNotAgain) {
    taskAt("Leave", 2min + 45s);
    start();
    advance(2min);
    ASSERT_TRUE(shows({"Leave: Inbox"}));
    desktop.shown.clear();
    advance(45s);
    stop();
    advance(1min);
    start();
    settle();
    EXPECT_TRUE(desktop.shown.empty());
}

TEST_F(RemindersTest, AreWithdrawnWhenNoLongerWanted) {
    start();
    CDTask& done = taskAt("Done", 60s);
    CDTask& moved = taskAt("Moved", 60s);
    CDTask& deleted = taskAt("Deleted", 60s);
    CDTask& same = taskAt("Same", 60s);
    ASSERT_TRUE(waitUntil([&] {
        advance(61s);
        return desktop.shown.size() == 4;
    }));

    environment->tasks().complete(context(), done, environment->calendar());
    environment->tasks().setReminder(moved, clock.now() + 1h);
    environment->tasks().remove(context(), deleted);
    environment->tasks().setTitle(same, "Another title");
    context().save();
    EXPECT_TRUE(shows({"Same: Inbox"}));
}

TEST_F(RemindersTest, ActionsCompleteTheTaskAndOpenItsOwner) {
    CDTask& task = taskAt("Water plants", 60s);
    CDTask& other = taskAt("Pay", 60s);
    start();
    advance(61s);
    ASSERT_TRUE(waitUntil([&] { return desktop.shown.size() == 2; }));
    const std::size_t first = desktop.shown[0].text.starts_with("Water") ? 0 : 1;
    press(1 - first, "default");
    EXPECT_TRUE(waitUntil([&] { return chosen.size() == 1; }));
    EXPECT_EQ(chosen[0], "tesserine://task/" + other.id->text());
    press(first, "complete");
    EXPECT_TRUE(waitUntil([&] { return task.completedAt.get().has_value(); }));
    EXPECT_TRUE(shows({"Pay: Inbox"}));
}

TEST_F(RemindersTest, ThoseMissedWhileClosedAreShownOnceTogether) {
    taskAt("Before the first start", 60s);
    advance(2min);
    start();
    stop();
    taskAt("One", 60s);
    taskAt("Two", 120s);
    taskAt("Later", 24h);
    advance(1h);
    start();
    EXPECT_TRUE(shows({"2 reminders while Tesserine was closed: One\nTwo"}));
    press(0, "open");
    EXPECT_TRUE(waitUntil([&] { return chosen == Texts{"tesserine://reminders"}; }));

    stop();
    desktop.shown.clear();
    taskAt("Single", 60s);
    advance(1h);
    start();
    EXPECT_TRUE(shows({"Single: Inbox"}));
}

TEST_F(RemindersTest, WithoutABusTheyAreTold) {
    Notifier alone{QDBusConnection("nowhere")};
    Texts notShown;
    QObject::connect(&alone, &Notifier::notShown, &alone, [&](const Notification& lost) {
        notShown.push_back(lost.title.toStdString());
    });
    int withdrawn = 0;
    QObject::connect(&alone, &Notifier::withdrawn, &alone, [&] { ++withdrawn; });
    CDTask& call = taskAt("Call", 60s);
    Reminders quiet(*environment, alone);
    quiet.start();
    clock.advance(61s);
    quiet.wake();
    EXPECT_TRUE(waitUntil([&] { return notShown == Texts{"Call"}; }));
    environment->tasks().setReminder(call, {});
    context().save();
    EXPECT_EQ(withdrawn, 1);
}

}  // namespace
}  // namespace tesserine::app
