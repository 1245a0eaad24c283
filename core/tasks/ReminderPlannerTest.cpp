#include "core/tasks/ReminderPlanner.h"

#include "base/Clock.h"
#include "base/Random.h"
#include "base/Text.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"

#include <gtest/gtest.h>

#include <chrono>

namespace tesserine {
namespace {

using namespace std::chrono_literals;

Instant utc(const char* text) { return Instant::parseISO(text).value(); }

class ReminderPlannerTest : public ::testing::Test {
protected:
    CDTask& addTask(Instant reminderAt, const char* title) {
        auto& task = context_.insert<CDTask>();
        task.title = title;
        task.reminderAt = reminderAt;
        owners_.tasks.push_back(&task);
        return task;
    }
    CDNote& addNote(Instant reminderAt, const char* title, const char* plainText = "") {
        auto& note = context_.insert<CDNote>();
        note.title = title;
        note.plainText = plainText;
        note.reminderAt = reminderAt;
        owners_.notes.push_back(&note);
        return note;
    }
    /// A line for each plan: title, body.
    std::string plans(int limit = ReminderPlanner::usualLimit) const {
        std::string lines;
        for (const ReminderPlan& plan : ReminderPlanner::plans(owners_, now_, limit)) {
            lines += plan.title + ": " + plan.body + "\n";
        }
        return lines;
    }

    const Instant now_ = utc("2026-03-14T09:00:00Z");
    FixedClock clock_{now_};
    SecureRandom random_;
    TesserineStore store_{{.inMemory = true}, {.clock = clock_, .random = random_}};
    StoreContext& context_{store_.viewContext()};
    ReminderOwners owners_;
};

TEST_F(ReminderPlannerTest, OnlyWhatIsStillToComeAndToDoIsPlanned) {
    addTask(now_, "at this moment");
    addNote(now_, "at this moment");
    addTask(now_ - 1s, "over");
    addTask(now_ + 1ms, "just later");
    addTask(now_ + 1s, "done").completedAt = now_;
    addNote(now_ + 1s, "in the trash").trashedAt = now_;
    addNote(now_ + 1s, "a template").isTemplate = true;
    addNote(now_ + 1s, "a note");
    EXPECT_EQ(plans(), "just later: \na note: \n");
}

TEST_F(ReminderPlannerTest, TheEarliestArePlannedInAFixedOrder) {
    const auto id = [](char last) {
        return Uuid::parse("00000000-0000-4000-8000-00000000000" + std::string(1, last));
    };
    addNote(now_ + 60s, "note 1").id = id('1');
    addTask(now_ + 60s, "task 3").id = id('3');
    addTask(now_ + 60s, "task 2").id = id('2');
    addNote(now_ + 30s, "note 9").id = id('9');
    EXPECT_EQ(plans(), "note 9: \ntask 2: \ntask 3: \nnote 1: \n");
    EXPECT_EQ(plans(2), "note 9: \ntask 2: \n");
    EXPECT_EQ(plans(0), "");
    EXPECT_EQ(plans(-1), "");

    const auto planned = ReminderPlanner::plans(owners_, now_, 2);
    EXPECT_EQ(planned[0].identifier(), "note-00000000-0000-4000-8000-000000000009");
    EXPECT_EQ(planned[1].identifier(), "00000000-0000-4000-8000-000000000002");

    for (int i = 75; i > 0; --i) {
        addTask(now_ + std::chrono::hours(i), "many");
    }
    const auto many = ReminderPlanner::plans(owners_, now_, ReminderPlanner::usualLimit);
    ASSERT_EQ(many.size(), 60U);
    EXPECT_EQ(many.back().fireAt, now_ + 56h);
}

TEST_F(ReminderPlannerTest, TitlesAndBodiesFallBackToWhatThereIs) {
    auto& project = context_.insert<CDProject>();
    project.name = "Work";
    addTask(now_ + 1s, "").project = &project;
    addTask(now_ + 2s, " ").details = "Bring cake";
    CDTask& both = addTask(now_ + 3s, "Call");
    both.project = &project;
    both.details = "Ada";
    addNote(now_ + 4s, "", "\n  Plans  \nfor\tthe\nhouse");
    addNote(now_ + 5s, "  ", "");
    EXPECT_EQ(
        plans(),
        "Task: Work\n"
        " : Bring cake\n"
        "Call: Ada\n"
        "Plans: Plans for the house\n"
        "Untitled: \n");
}

TEST_F(ReminderPlannerTest, BodiesAreCutBetweenCharacters) {
    std::string waves;
    for (int i = 0; i < 300; ++i) {
        waves += "👋🏽";
    }
    addTask(now_ + 1s, "task").details = waves;
    addNote(now_ + 2s, "note", waves.c_str());
    const auto planned = ReminderPlanner::plans(owners_, now_, 2);
    EXPECT_EQ(text::characterCount(planned[0].body), 200U);
    EXPECT_EQ(text::characterCount(planned[1].body), 140U);
}

std::string textOf(const ReminderTrigger& trigger) {
    if (const auto* const interval = std::get_if<IntervalTrigger>(&trigger)) {
        return std::to_string(interval->seconds);
    }
    const auto& calendar = std::get<CalendarTrigger>(trigger);
    return calendar.minute.iso() + " " + calendar.zone;
}

TEST(ReminderTrigger, IsTheMinuteOnTheWallClockUntilThatMinuteBegins) {
    struct Case {
        const char* zone;
        const char* fireAt;
        const char* now;
        const char* trigger;
    };
    for (const auto& [zone, fireAt, now, trigger] : {
             Case{
                 "Europe/Berlin",
                 "2026-03-10T10:00:45Z",
                 "2026-03-10T09:59:59.999Z",
                 "2026-03-10T11:00:00 Europe/Berlin"},
             Case{"UTC", "2026-03-10T10:00:45Z", "2026-03-10T10:00:00Z", "45.000000"},
             Case{"UTC", "2026-03-10T10:00:45Z", "2026-03-10T10:00:43.500Z", "1.500000"},
             Case{"UTC", "2026-03-10T10:00:45Z", "2026-03-10T10:00:44.500Z", "1.000000"},
             Case{"UTC", "2026-03-10T10:00:00Z", "2026-03-10T11:00:00Z", "1.000000"},
             // The second 02:30 of that night has the fields of the first, which is over.
             Case{"Europe/Berlin", "2026-10-25T01:30:00Z", "2026-10-25T00:45:00Z", "2700.000000"},
         }) {
        EXPECT_EQ(textOf(reminderTrigger(utc(fireAt), utc(now), Calendar(zone))), trigger);
    }
}

TEST(DeliveredReminder, IsOutdatedWhenItsOwnersReminderIsGoneOrMovedByMoreThanAMinute) {
    const Instant shown = utc("2026-03-10T10:00:00Z");
    const DeliveredReminder delivered{.fireAt = shown};
    EXPECT_TRUE(delivered.isOutdated(std::nullopt));
    EXPECT_FALSE(delivered.isOutdated(shown + 60s));
    EXPECT_FALSE(delivered.isOutdated(shown - 60s));
    EXPECT_TRUE(delivered.isOutdated(shown + 60.001s));
    EXPECT_TRUE(delivered.isOutdated(shown - 60.001s));

    EXPECT_TRUE(DeliveredReminder{}.isOutdated(std::nullopt));
    EXPECT_FALSE(DeliveredReminder{}.isOutdated(shown));
}

}  // namespace
}  // namespace tesserine
