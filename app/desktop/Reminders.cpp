#include "app/desktop/Reminders.h"

#include "app/desktop/ReminderFetches.h"
#include "app/state/AppEnvironment.h"
#include "base/Files.h"
#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"

#include <algorithm>
#include <chrono>
#include <variant>

namespace tesserine::app {
namespace {

using namespace std::chrono_literals;

constexpr auto wakeInterval = 30s;
constexpr const char* missedIdentifier = "missed";
constexpr const char* completeAction = "complete";
constexpr const char* openAction = "open";
constexpr std::size_t mostTitles = 5;  // of a notification that tells of many

bool concernsReminders(const std::vector<ObjectChange>& changes) {
    return std::ranges::any_of(changes, [](const ObjectChange& change) {
        return change.entity == EntityKind::task || change.entity == EntityKind::note;
    });
}

/// When the reminder is shown: at the beginning of its minute, or once the seconds left have gone.
Instant showingTime(Instant fireAt, Instant now, const Calendar& calendar) {
    const ReminderTrigger trigger = reminderTrigger(fireAt, now, calendar);
    if (const auto* interval = std::get_if<IntervalTrigger>(&trigger)) {
        return now + Instant::Duration(interval->seconds);
    }
    return calendar.instant(std::get<CalendarTrigger>(trigger).minute);
}

Place placeOf(const DeliveredReminder& delivered) {
    if (delivered.taskID) return {.kind = Place::Kind::task, .id = *delivered.taskID};
    return {.kind = Place::Kind::note, .id = *delivered.noteID};
}

DeliveredReminder deliveredFrom(const ReminderPlan& plan) {
    DeliveredReminder delivered{.identifier = plan.identifier(), .fireAt = plan.fireAt};
    (plan.kind == ReminderPlan::Kind::task ? delivered.taskID : delivered.noteID) = plan.ownerID;
    return delivered;
}

Notification notificationOf(const ReminderPlan& plan) {
    const bool isTask = plan.kind == ReminderPlan::Kind::task;
    Notification notification{
        .identifier = plan.identifier(),
        .title = QString::fromStdString(plan.title),
        .body = QString::fromStdString(plan.body)};
    if (isTask) notification.actions.push_back({completeAction, Reminders::tr("Complete")});
    notification.actions.push_back({openAction, Reminders::tr("Open")});
    notification.information[isTask ? "taskID" : "noteID"] =
        QString::fromStdString(plan.ownerID.text());
    return notification;
}

Notification notificationOf(const std::vector<ReminderPlan>& missed) {
    QStringList titles;
    for (const ReminderPlan& plan : missed) {
        titles << QString::fromStdString(plan.title);
    }
    const auto more = titles.size() - static_cast<qsizetype>(mostTitles);
    if (more > 0) titles = titles.first(mostTitles) << Reminders::tr("and %1 more").arg(more);
    return {
        .identifier = missedIdentifier,
        .title = Reminders::tr("%1 reminders while Tesserine was closed").arg(missed.size()),
        .body = titles.join('\n'),
        .actions = {{openAction, Reminders::tr("Open")}}};
}

}  // namespace

Reminders::Reminders(AppEnvironment& environment, Notifier& notifier, QObject* parent)
    : QObject(parent), environment_(environment), notifier_(notifier) {
    timer_.setInterval(wakeInterval);
    connect(&timer_, &QTimer::timeout, this, &Reminders::wake);
    connect(&notifier_, &Notifier::acted, this, &Reminders::act);
}

void Reminders::start() {
    connect(&environment_, &AppEnvironment::libraryChanged, this, &Reminders::follow);
    connect(&environment_, &AppEnvironment::calendarChanged, this, &Reminders::wake);
    const auto text = environment_.preferences().string(shownUntilKey);
    const auto shownUntil = text ? Instant::parseISO(*text) : std::nullopt;
    // A library that was never open has missed nothing.
    if (shownUntil) {
        showMissed(missedReminders(environment_.context(), *shownUntil, environment_.now()));
    }
    rememberShown(environment_.now());
    plan();
}

void Reminders::plan() {
    planned_.clear();
    const Instant now = environment_.now();
    Instant next = now + wakeInterval;
    for (ReminderPlan& plan : ReminderPlanner::plans(
             comingReminders(environment_.context(), now), now, ReminderPlanner::usualLimit)) {
        const std::string identifier = plan.identifier();
        // What is shown in the beginning of its minute still lies ahead.
        const auto shown = delivered_.find(identifier);
        if (shown != delivered_.end() && shown->second.fireAt == plan.fireAt) continue;
        const Instant showAt = showingTime(plan.fireAt, now, environment_.calendar());
        next = std::min(next, showAt);
        planned_.insert_or_assign(identifier, Planned{std::move(plan), showAt});
    }
    const auto wait = std::chrono::duration_cast<std::chrono::milliseconds>(next - now);
    timer_.start(std::clamp<std::chrono::milliseconds>(wait, 0ms, wakeInterval));
}

void Reminders::wake() {
    showDue();
    plan();
}

void Reminders::showDue() {
    const Instant now = environment_.now();
    std::optional<Instant> shownUntil;
    for (const auto& [identifier, planned] : planned_) {
        if (planned.showAt > now) continue;
        const DeliveredReminder due = deliveredFrom(planned.plan);
        if (due.isOutdated(reminderOf(due))) continue;
        show(planned.plan);
        shownUntil = std::max({shownUntil.value_or(now), now, planned.plan.fireAt});
    }
    if (shownUntil) rememberShown(*shownUntil);
}

void Reminders::show(const ReminderPlan& plan) {
    delivered_.insert_or_assign(plan.identifier(), deliveredFrom(plan));
    notifier_.show(notificationOf(plan));
}

void Reminders::showMissed(const std::vector<ReminderPlan>& missed) {
    if (missed.size() == 1) return show(missed.front());
    if (!missed.empty()) notifier_.show(notificationOf(missed));
}

void Reminders::follow(const std::vector<ObjectChange>& changes) {
    if (!concernsReminders(changes)) return;
    withdrawOutdated();
    wake();
}

void Reminders::withdrawOutdated() {
    std::erase_if(delivered_, [this](const auto& entry) {
        const bool isOutdated = entry.second.isOutdated(reminderOf(entry.second));
        if (isOutdated) notifier_.withdraw(entry.first);
        return isOutdated;
    });
}

std::optional<Instant> Reminders::reminderOf(const DeliveredReminder& delivered) const {
    StoreContext& context = environment_.context();
    if (delivered.taskID) {
        const CDTask* const task = context.find<CDTask>(*delivered.taskID);
        return task && !task->completedAt ? task->reminderAt.get() : std::nullopt;
    }
    const CDNote* const note = context.find<CDNote>(*delivered.noteID);
    return note && !note->trashedAt ? note->reminderAt.get() : std::nullopt;
}

void Reminders::act(const std::string& identifier, const std::string& action) {
    if (identifier == missedIdentifier) {
        emit chosen({.kind = Place::Kind::reminders});
        return;
    }
    const auto found = delivered_.find(identifier);
    if (found == delivered_.end()) return;
    const DeliveredReminder delivered = found->second;
    if (action == completeAction && delivered.taskID) return complete(*delivered.taskID);
    emit chosen(placeOf(delivered));
}

void Reminders::complete(const Uuid& id) {
    auto* const task = environment_.context().find<CDTask>(id);
    if (!task) return;
    environment_.tasks().complete(environment_.context(), *task, environment_.calendar());
    environment_.save(nullptr);
}

void Reminders::rememberShown(Instant until) {
    try {
        environment_.preferences().set(shownUntilKey, until.iso());
    } catch (const FileError& error) {
        environment_.log().warning(std::string("reminders: ") + error.what());
    }
}

}  // namespace tesserine::app
