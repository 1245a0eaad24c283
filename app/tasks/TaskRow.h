#pragma once

#include "base/Uuid.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskService.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <unordered_map>

namespace tesserine {
class StoreContext;
class TesserineStore;
namespace text {
class Collator;
}
}  // namespace tesserine

namespace tesserine::app {

/// One line of a task list: a task, a subtask below it, or the heading of a group.
struct TaskRow {
    /// The heading; empty for a task.
    QString heading{};
    bool isOverdueGroup = false;

    Uuid id{};
    QString title{};
    std::optional<Instant> dueDate{};
    bool dueHasTime = false;
    TaskPriority priority = TaskPriority::p4;
    QString project{};  ///< empty for the Inbox, and where a list is of one project
    QStringList labels{};
    int subtaskCount = 0;
    int doneSubtaskCount = 0;
    bool isSubtask = false;
    bool isBelowItsDay = false;  ///< a heading above names the day it is due
    bool isCompleted = false;
    bool isExpanded = false;
    bool repeats = false;
    bool hasReminder = false;
    bool hasDetails = false;
    bool hasNote = false;
    bool hasConflict = false;  ///< two versions of it wait for a choice

    bool isTask() const { return heading.isEmpty(); }
    std::optional<TaskDue> due() const {
        return dueDate ? std::optional(TaskDue{.date = *dueDate, .hasTime = dueHasTime})
                       : std::nullopt;
    }
    friend bool operator==(const TaskRow&, const TaskRow&) = default;

    /// Whether it shows anything below its title.
    bool hasPieces() const;

    static TaskRow group(const QString& heading, bool isOverdue = false);
    static TaskRow of(const CDTask& task, const text::Collator& collator);
};

/// Reads rows one by one as their lines come into view, and keeps the last ones.
///
/// Reads what is saved, with a context of its own that it empties again: scrolling through very
/// many tasks does not fill the memory. Belongs to the main thread.
class TaskRows {
public:
    /// Both outlive it.
    TaskRows(TesserineStore& store, const text::Collator& collator);
    TaskRows(const TaskRows&) = delete;
    TaskRows& operator=(const TaskRows&) = delete;
    ~TaskRows();

    /// That of a task which is gone is empty. Good until the next call.
    const TaskRow& of(const Uuid& task);
    /// Reads everything anew from now on; after a change of the library.
    void forget();
    /// The context, for other short reading; objects of it do not last.
    StoreContext& context() { return *context_; }

private:
    static constexpr std::size_t mostKept = 500;

    const text::Collator& collator_;
    std::unique_ptr<StoreContext> context_;
    std::unordered_map<Uuid, TaskRow> kept_;
};

/// The title as lists show it.
QString shownTitle(const QString& title);
/// The same for a sentence: cut when it is long.
QString briefTitle(const QString& title);

}  // namespace tesserine::app
