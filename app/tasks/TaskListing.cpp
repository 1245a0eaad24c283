#include "app/tasks/TaskListing.h"

#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"

#include <tuple>
#include <unordered_set>
#include <utility>

namespace tesserine::app {
namespace {

bool isOfOneProject(TaskView::Kind kind) {
    return kind == TaskView::Kind::project || kind == TaskView::Kind::inbox;
}

/// Whether the view orders by the day on which tasks are due.
bool isByDueDate(TaskView::Kind kind) {
    return kind == TaskView::Kind::today || kind == TaskView::Kind::upcoming;
}

std::int64_t keyOfInbox(StoreContext& context) {
    const auto* inbox = context.fetchFirst<CDProject>({.predicate = {"isInbox == YES"}});
    return inbox == nullptr ? 0 : inbox->key();
}

bool hasLabels(StoreContext& context, const Uuid& id) {
    const auto* task = context.find<CDTask>(id);
    return task != nullptr && !task->labels.empty();
}

}  // namespace

TaskListing::TaskListing(TaskView view, Instant now, Calendar calendar)
    : view_(std::move(view)),
      now_(now),
      today_(calendar.startOfDay(now)),
      calendar_(std::move(calendar)) {}

bool TaskListing::hasGroups() const {
    return isByDueDate(view_.kind()) || view_.kind() == TaskView::Kind::completed;
}

bool TaskListing::isBelowItsDay(const TaskEntry& entry) const {
    return isByDueDate(view_.kind()) && entry.day.has_value();
}

// Order

bool TaskListing::isBefore(const TaskEntry& one, const TaskEntry& other) const {
    const auto manual = [](const TaskEntry& of) { return std::tie(of.sortIndex, of.date, of.id); };
    const auto byDue = [](const TaskEntry& of) {
        return std::tie(of.date, of.priority, of.sortIndex, of.id);
    };
    if (isByDueDate(view_.kind())) return byDue(one) < byDue(other);
    if (!hasGroups()) return manual(one) < manual(other);
    return std::tie(other.date, one.id) < std::tie(one.date, other.id);
}

bool TaskListing::isDayBefore(const TaskEntry& one, const TaskEntry& other) const {
    const bool isNewestFirst = view_.kind() == TaskView::Kind::completed;
    return isNewestFirst ? other.day < one.day : one.day < other.day;
}

// Reading

std::vector<TaskEntry> TaskListing::first(StoreContext& context, std::size_t count) const {
    FetchRequest request = view_.request(now_, calendar_);
    request.limit = count;
    auto entries = read(context, request);
    for (TaskEntry& entry : entries) {
        entry.isTall = entry.isTall || hasLabels(context, entry.id);
    }
    return entries;
}

std::vector<TaskEntry> TaskListing::all(StoreContext& context) const {
    FetchRequest request = view_.request(now_, calendar_);
    auto entries = read(context, request);
    std::unordered_set<Uuid> labelled;
    request.predicate = Predicate::both(request.predicate, {"ANY labels.id != nil"});
    request.sort.clear();
    context.visitRows<CDTask>(request, [&labelled](const ListedRow& row) {
        labelled.insert(row.get(&CDTask::id).value_or(Uuid()));
    });
    for (TaskEntry& entry : entries) {
        entry.isTall = entry.isTall || labelled.contains(entry.id);
    }
    return entries;
}

std::optional<TaskEntry> TaskListing::find(StoreContext& context, const Uuid& task) const {
    const Predicate belongs = view_.request(now_, calendar_).predicate;
    auto entries = read(context, {.predicate = Predicate::both({"id == %@", task}, belongs)});
    if (entries.empty()) return std::nullopt;
    entries.front().isTall = entries.front().isTall || hasLabels(context, task);
    return entries.front();
}

std::vector<TaskEntry> TaskListing::read(StoreContext& context, const FetchRequest& request) const {
    const std::int64_t inbox = keyOfInbox(context);
    std::vector<TaskEntry> entries;
    context.visitRows<CDTask>(
        request, [&](const ListedRow& row) { entries.push_back(entryOf(row, inbox)); });
    return entries;
}

TaskEntry TaskListing::entryOf(const ListedRow& row, std::int64_t inbox) const {
    const bool isCompleted = view_.kind() == TaskView::Kind::completed;
    const auto date = isByDueDate(view_.kind()) ? &CDTask::dueDate
                      : isCompleted             ? &CDTask::completedAt
                                                : &CDTask::createdAt;
    TaskEntry entry{
        .id = row.get(&CDTask::id).value_or(Uuid()),
        .date = row.get(date),
        .priority = row.get(&CDTask::priority),
        .sortIndex = row.get(&CDTask::sortIndex)};
    entry.day = dayOf(entry.date);
    entry.isTall = isTall(row, entry, inbox);
    return entry;
}

std::optional<Instant> TaskListing::dayOf(const std::optional<Instant>& date) const {
    if (!date || !hasGroups()) return std::nullopt;
    const bool isOverdue = view_.kind() == TaskView::Kind::today && *date < today_;
    return isOverdue ? std::nullopt : std::optional(calendar_.startOfDay(*date));
}

/// What its row tells about that; labels are in none.
bool TaskListing::isTall(const ListedRow& row, const TaskEntry& entry, std::int64_t inbox) const {
    const bool hasDue = row.get(&CDTask::dueDate).has_value();
    const bool showsDue =
        hasDue && (!isBelowItsDay(entry) || row.get(&CDTask::dueHasTime).value_or(false));
    const std::int64_t project = row.key(&CDTask::project);
    const bool isSubtask = row.key(&CDTask::parent) != 0;
    const bool showsProject =
        project != 0 && project != inbox && !isSubtask && !isOfOneProject(view_.kind());
    return showsDue || showsProject || row.key(&CDTask::linkedNote) != 0
           || row.get(&CDTask::reminderAt).has_value()
           || !row.get(&CDTask::recurrenceRule).value_or("").empty();
}

}  // namespace tesserine::app
