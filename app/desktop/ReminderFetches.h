#pragma once

#include "base/Instant.h"
#include "core/tasks/ReminderPlanner.h"

#include <cstddef>
#include <vector>

namespace tesserine {
class StoreContext;
}

namespace tesserine::app {

/// The owners of reminders from `from` on, earliest first, at most as many of each kind as the
/// planner plans in all. Completed tasks, trashed notes and templates are left out.
ReminderOwners comingReminders(StoreContext& context, Instant from);

/// Reminders later than `since` that are not later than `now`, in the order of their times, at most
/// `ReminderPlanner::usualLimit` of each kind.
std::vector<ReminderPlan> missedReminders(StoreContext& context, Instant since, Instant now);

}  // namespace tesserine::app
