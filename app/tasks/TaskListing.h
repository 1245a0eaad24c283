#pragma once

#include "base/Calendar.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "core/tasks/TaskView.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tesserine {
class ListedRow;
class StoreContext;
}  // namespace tesserine

namespace tesserine::app {

/// What a list keeps of each task that it holds, whether its line is in view or not.
struct TaskEntry {
    Uuid id{};
    std::optional<Instant> date{};  ///< the one that the view orders by
    std::optional<std::int64_t> priority{};
    std::optional<std::int64_t> sortIndex{};
    /// The day of its group; none where there are no groups, and for what is overdue.
    std::optional<Instant> day{};
    bool isTall = false;  ///< something stands below the title
    friend bool operator==(const TaskEntry&, const TaskEntry&) = default;
};

/// The tasks of a view as they are on one day: which belong to it, in what order and groups.
///
/// A value; reads on whatever thread owns the context it is handed.
class TaskListing {
public:
    TaskListing(TaskView view, Instant now, Calendar calendar);

    const TaskView& view() const { return view_; }
    bool hasGroups() const;
    /// Whether a heading above the task names the day it is due.
    bool isBelowItsDay(const TaskEntry& entry) const;

    bool isBefore(const TaskEntry& one, const TaskEntry& other) const;
    bool isDayBefore(const TaskEntry& one, const TaskEntry& other) const;

    std::vector<TaskEntry> first(StoreContext& context, std::size_t count) const;
    std::vector<TaskEntry> all(StoreContext& context) const;
    /// None when the task does not belong to the view.
    std::optional<TaskEntry> find(StoreContext& context, const Uuid& task) const;

private:
    std::vector<TaskEntry> read(StoreContext& context, const FetchRequest& request) const;
    TaskEntry entryOf(const ListedRow& row, std::int64_t inbox) const;
    bool isTall(const ListedRow& row, const TaskEntry& entry, std::int64_t inbox) const;
    std::optional<Instant> dayOf(const std::optional<Instant>& date) const;

    TaskView view_;
    Instant now_;
    Instant today_;
    Calendar calendar_;
};

}  // namespace tesserine::app
