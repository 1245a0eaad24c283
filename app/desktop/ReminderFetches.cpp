#include "app/desktop/ReminderFetches.h"

#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/tasks/TaskView.h"

#include <algorithm>

namespace tesserine::app {
namespace {

FetchRequest notesWithReminder(Instant from) {
    return {
        .predicate = {"trashedAt == nil AND isTemplate == NO AND reminderAt >= %@", from},
        .sort = {{"reminderAt"}},
        .limit = ReminderPlanner::usualLimit};
}

}  // namespace

ReminderOwners comingReminders(StoreContext& context, Instant from) {
    FetchRequest tasks = tasksWithPendingReminder(from);
    tasks.limit = ReminderPlanner::usualLimit;
    return {
        .tasks = context.fetch<CDTask>(tasks),
        .notes = context.fetch<CDNote>(notesWithReminder(from))};
}

std::vector<ReminderPlan> missedReminders(StoreContext& context, Instant since, Instant now) {
    // As they were to be planned at that time.
    std::vector<ReminderPlan> plans = ReminderPlanner::plans(
        comingReminders(context, since), since, 2 * ReminderPlanner::usualLimit);
    std::erase_if(plans, [now](const ReminderPlan& plan) { return plan.fireAt > now; });
    return plans;
}

}  // namespace tesserine::app
