#pragma once

#include "base/Clock.h"
#include "core/tasks/ProjectService.h"
#include "core/tasks/TaskSnapshot.h"
#include "core/tasks/TaskView.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class Calendar;
class StoreContext;
struct QuickAddResult;

/// When a task is due: an instant, or with `hasTime` false the day that begins at `date`.
struct TaskDue {
    Instant date;
    bool hasTime = false;
};

/// What a new task holds.
struct TaskDraft {
    std::string title{};
    std::string details{};
    std::optional<TaskDue> due{};
    std::optional<Instant> reminderAt{};
    TaskPriority priority = TaskPriority::p4;
    std::optional<RecurrenceRule> recurrence{};
    std::vector<std::string> labels{};  ///< names; labels that are not there are made
    /// The project, by its name when `project` is null; made when there is none of that name. With
    /// neither it is the Inbox.
    CDProject* project = nullptr;
    std::string projectName{};
    CDTask* parent = nullptr;  ///< makes a subtask, which takes the parent's project
    CDNote* linkedNote = nullptr;
    std::optional<Uuid> id{};  ///< none: a new one
};

/// The one place where tasks are created, changed, completed and listed.
///
/// Works in the context it is handed and never saves, so that a caller can put several changes into
/// one save. Every change stamps `updatedAt`. Tasks form a tree of two levels: a subtask has none
/// of its own. Days begin and clocks show what the calendar says that is handed in. Holds no
/// library state. Not synchronised: call it on the thread that owns the context.
class TaskService {
public:
    using View = TaskView;
    static constexpr std::size_t maximumTitleCharacters = 10'000;

    explicit TaskService(const Clock& clock) : clock_(clock), projects_(clock) {}

    /// Throws `TaskError::titleTooLong`.
    static void checkTitle(const std::string& title);

    const ProjectService& projects() const noexcept { return projects_; }

    // Listing

    /// The tasks of a view in its order.
    std::vector<CDTask*> tasks(
        StoreContext& context, const View& view, const Calendar& calendar) const;
    /// The same as values, each with its subtasks.
    std::vector<TaskSnapshot> snapshots(
        StoreContext& context,
        const View& view,
        const Calendar& calendar,
        const text::Collator& collator) const;
    std::size_t count(StoreContext& context, const View& view, const Calendar& calendar) const;

    // Creating

    /// Inserts a task that holds `draft`, behind the others of its level. A parent that is a
    /// subtask stands for its own parent. Throws `TaskError`.
    CDTask& create(StoreContext& context, TaskDraft draft) const;
    /// The task that a quick-add sentence means. A rule without a date is due first on the first
    /// day that fits it, today included unless the time of day has passed; a monthly or yearly rule
    /// keeps to the 29th to 31st when the due date is one of them.
    TaskDraft draftOf(std::string_view sentence, const Calendar& calendar) const;
    TaskDraft draftOf(const QuickAddResult& result, const Calendar& calendar) const;
    CDTask& createFromSentence(
        StoreContext& context, std::string_view sentence, const Calendar& calendar) const;
    /// A task in the Inbox that is linked to the note; without a title it has the note's.
    CDTask& createFromNote(
        StoreContext& context, CDNote& note, std::optional<std::string> title = {}) const;
    /// A copy beside the task: with its fields, without its labels and subtasks, not completed.
    CDTask& duplicate(StoreContext& context, const CDTask& task) const;
    /// "Plan copy"; "Copy" for a title of nothing.
    static std::string duplicateTitle(std::string_view title);

    // Changing

    /// Completes the task. One that repeats and has a due date moves on to its next one instead,
    /// its reminder and subtasks with it, and a completed copy of it is kept, which is returned.
    /// Does nothing for a completed task.
    CDTask* complete(StoreContext& context, CDTask& task, const Calendar& calendar) const;
    /// Does nothing for an open task.
    void reopen(CDTask& task) const;

    /// Throws `TaskError`.
    void setTitle(CDTask& task, std::string title) const;
    void setDetails(CDTask& task, std::string details) const;
    /// A reminder moves along from one due date to another: as many days, at its time of day, and
    /// where both have a time of day, by their difference too. It stays with a first due date and
    /// when there is none any more.
    void setDue(CDTask& task, const std::optional<TaskDue>& due, const Calendar& calendar) const;
    void setReminder(CDTask& task, const std::optional<Instant>& at) const;
    void setPriority(CDTask& task, TaskPriority priority) const;
    /// Keeps the rule as it is given; none ends the repetition.
    void setRecurrence(CDTask& task, const std::optional<RecurrenceRule>& rule) const;
    /// Makes the task repeat by a rule that a person typed, with the due date and the day of the
    /// month that `draftOf` would give it.
    void repeat(CDTask& task, const RecurrenceRule& rule, const Calendar& calendar) const;

    /// Adds the label, made when there is none of this name; an empty name changes nothing.
    void addLabel(StoreContext& context, CDTask& task, std::string_view name) const;
    void removeLabel(CDTask& task, CDTag& label) const;

    /// Puts the task, with its subtasks, into the project. A subtask leaves its parent.
    void moveToProject(StoreContext& context, CDTask& task, CDProject& project) const;
    /// Makes the task the last subtask of `parent`, in its project; null takes it out of its
    /// parent. Refused, and false, for a task with subtasks and for the task itself.
    bool setParent(StoreContext& context, CDTask& task, CDTask* parent) const;
    /// Gives tasks of one level the order in which they stand here, among the places they have.
    void reorder(const std::vector<CDTask*>& inNewOrder) const;

    /// Deletes the task and its subtasks.
    void remove(StoreContext& context, CDTask& task) const;

private:
    CDTask& insertCompletedCopy(StoreContext& context, const CDTask& task) const;
    void moveOn(CDTask& task, Instant nextDue, const Calendar& calendar) const;

    const Clock& clock_;
    ProjectService projects_;
};

}  // namespace tesserine
