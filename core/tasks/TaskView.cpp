#include "core/tasks/TaskView.h"

#include "base/Calendar.h"

namespace tesserine {
namespace {

using Sort = std::vector<SortDescriptor>;

const Sort manualOrder{{"sortIndex"}, {"createdAt"}};
const Sort dueOrder{{"dueDate"}, {"priority"}, {"sortIndex"}};
const Sort newestCompletion{{"completedAt", SortDescriptor::Order::descending}};

const Sort& order(TaskView::Kind kind) {
    switch (kind) {
    case TaskView::Kind::today:
    case TaskView::Kind::upcoming: return dueOrder;
    case TaskView::Kind::completed: return newestCompletion;
    case TaskView::Kind::project:
    case TaskView::Kind::label:
    case TaskView::Kind::inbox:
    case TaskView::Kind::all: break;
    }
    return manualOrder;
}

Instant startOfNextDay(Instant instant, const Calendar& calendar) {
    return calendar.startOfDay(calendar.addDays(calendar.startOfDay(instant), 1));
}

}  // namespace

Predicate TaskView::predicate(Instant now, const Calendar& calendar) const {
    switch (kind_) {
    case Kind::project:
        return {"completedAt == nil AND project.id == %@ AND parent == nil", projectID_};
    case Kind::label:
        return {"completedAt == nil AND ANY labels.name ==[c] %@ AND parent == nil", labelName_};
    case Kind::inbox: return {"completedAt == nil AND project.isInbox == YES AND parent == nil"};
    case Kind::today:
        return {
            "completedAt == nil AND dueDate != nil AND dueDate < %@ AND parent == nil",
            startOfNextDay(now, calendar)};
    case Kind::upcoming:
        return {
            "completedAt == nil AND dueDate >= %@ AND parent == nil",
            startOfNextDay(now, calendar)};
    case Kind::all: return {"completedAt == nil AND parent == nil"};
    case Kind::completed: break;
    }
    return {"completedAt != nil"};
}

FetchRequest TaskView::request(Instant now, const Calendar& calendar) const {
    return {.predicate = predicate(now, calendar), .sort = order(kind_)};
}

FetchRequest tasksDueOn(Instant day, const Calendar& calendar) {
    return {
        .predicate =
            {"dueDate != nil AND dueDate >= %@ AND dueDate < %@ AND parent == nil",
             calendar.startOfDay(day),
             startOfNextDay(day, calendar)},
        .sort = dueOrder};
}

FetchRequest tasksWithPendingReminder(Instant now) {
    return {
        .predicate = {"completedAt == nil AND reminderAt != nil AND reminderAt >= %@", now},
        .sort = {{"reminderAt"}}};
}

}  // namespace tesserine
