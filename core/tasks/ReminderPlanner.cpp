#include "core/tasks/ReminderPlanner.h"

#include "base/Text.h"
#include "core/body/PlainText.h"
#include "core/model/TaskEntities.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <tuple>

namespace tesserine {
namespace {

using Kind = ReminderPlan::Kind;

/// A reminder to come; nothing to be shown was read yet.
struct Coming {
    Instant fireAt;
    Kind kind;
    Uuid ownerID;
    CDTask* task = nullptr;  // one of the two
    CDNote* note = nullptr;

    friend bool operator<(const Coming& a, const Coming& b) {
        return std::tie(a.fireAt, a.kind, a.ownerID) < std::tie(b.fireAt, b.kind, b.ownerID);
    }
};

std::vector<Coming> comingReminders(const ReminderOwners& owners, Instant now) {
    std::vector<Coming> coming;
    for (CDTask* const task : owners.tasks) {
        if (!task->reminderAt || *task->reminderAt <= now || task->completedAt) continue;
        coming.push_back({*task->reminderAt, Kind::task, task->id.valueOr({}), task, nullptr});
    }
    for (CDNote* const note : owners.notes) {
        if (!note->reminderAt || *note->reminderAt <= now) continue;
        if (note->trashedAt || note->isTemplate) continue;
        coming.push_back({*note->reminderAt, Kind::note, note->id.valueOr({}), nullptr, note});
    }
    return coming;
}

std::string bodyOf(const CDTask& task) {
    constexpr std::size_t longestBody = 200;
    const std::string details = task.details.valueOr("");
    if (!details.empty()) return std::string(text::prefix(details, longestBody));
    const CDProject* const project = task.project;
    return project == nullptr ? std::string() : project->name.valueOr("");
}

ReminderPlan planOf(const Coming& coming) {
    ReminderPlan plan{.kind = coming.kind, .fireAt = coming.fireAt, .ownerID = coming.ownerID};
    if (coming.kind == Kind::task) {
        plan.title = coming.task->title.valueOr("");
        if (plan.title.empty()) plan.title = "Task";
        plan.body = bodyOf(*coming.task);
        return plan;
    }
    constexpr std::size_t longestSnippet = 140;
    const std::string plainText = coming.note->plainText.valueOr("");
    plan.title = displayTitle(coming.note->title.valueOr(""), plainText);
    plan.body = PlainText::snippet(plainText, longestSnippet);
    return plan;
}

}  // namespace

std::string ReminderPlan::identifier() const {
    return (kind == Kind::note ? "note-" : "") + ownerID.text();
}

std::vector<ReminderPlan> ReminderPlanner::plans(
    const ReminderOwners& owners, Instant now, int limit) {
    auto coming = comingReminders(owners, now);
    std::ranges::sort(coming, std::less<>());
    coming.resize(std::min(coming.size(), static_cast<std::size_t>(std::max(limit, 0))));

    std::vector<ReminderPlan> plans;
    std::ranges::transform(coming, std::back_inserter(plans), planOf);
    return plans;
}

ReminderTrigger reminderTrigger(Instant fireAt, Instant now, const Calendar& calendar) {
    LocalTime minute = calendar.local(fireAt);
    minute.second = 0;
    minute.millisecond = 0;
    const bool hasBegun = calendar.instant(minute) <= now;
    if (hasBegun) return IntervalTrigger{std::max((fireAt - now).count(), 1.0)};
    return CalendarTrigger{.minute = minute, .zone = calendar.zone()};
}

bool DeliveredReminder::isOutdated(std::optional<Instant> reminderAt) const {
    constexpr std::chrono::seconds tolerance{60};
    if (!reminderAt) return true;
    if (!fireAt) return false;
    return std::chrono::abs(*fireAt - *reminderAt) > tolerance;
}

}  // namespace tesserine
