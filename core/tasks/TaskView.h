#pragma once

#include "base/Uuid.h"
#include "core/store/Predicate.h"

#include <string>

namespace tesserine {

class Calendar;

/// Which tasks a list shows. All but `completed` show open tasks without a parent; completed
/// subtasks stand among the completed tasks.
class TaskView {
public:
    enum class Kind { project, label, inbox, today, upcoming, all, completed };

    static TaskView project(const Uuid& id) { return {Kind::project, id, {}}; }
    /// Label names match without regard to case.
    static TaskView label(std::string name) { return {Kind::label, {}, std::move(name)}; }
    static TaskView inbox() { return {Kind::inbox, {}, {}}; }
    /// What is due today, and everything overdue.
    static TaskView today() { return {Kind::today, {}, {}}; }
    static TaskView upcoming() { return {Kind::upcoming, {}, {}}; }
    static TaskView all() { return {Kind::all, {}, {}}; }
    static TaskView completed() { return {Kind::completed, {}, {}}; }

    Kind kind() const noexcept { return kind_; }
    /// What to fetch: the list in its order, without a limit. Days begin in `calendar`.
    FetchRequest request(Instant now, const Calendar& calendar) const;

private:
    TaskView(Kind kind, const Uuid& projectID, std::string labelName)
        : kind_(kind), projectID_(projectID), labelName_(std::move(labelName)) {}
    Predicate predicate(Instant now, const Calendar& calendar) const;

    Kind kind_;
    Uuid projectID_;
    std::string labelName_;
};

/// Tasks of the day that `day` lies in, completed ones included, earliest and most urgent first.
FetchRequest tasksDueOn(Instant day, const Calendar& calendar);
/// Open tasks whose reminder is still to come, or due now; earliest first.
FetchRequest tasksWithPendingReminder(Instant now);

}  // namespace tesserine
