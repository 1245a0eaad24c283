#include "app/tasks/TaskHistory.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskRow.h"
#include "app/tasks/TaskWords.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace tesserine::app {
namespace {

template <class Entity>
std::optional<Uuid> idOf(const Entity* entity) {
    if (entity == nullptr) return std::nullopt;
    return entity->id.get();
}

/// Puts back a value that nobody has changed since.
template <class T>
void putBackIn(Attribute<T>& now, const std::optional<T>& before, const std::optional<T>& after) {
    if (before != after && now.get() == after) now = before;
}

/// "tomorrow", where names of days keep their capitals.
QString withinSentence(QString due) {
    const bool isName = !due.startsWith("To") && !due.startsWith("Yesterday");
    if (!isName) due[0] = due[0].toLower();
    return due;
}

}  // namespace

TaskHistory& TaskHistory::of(AppEnvironment& environment) {
    auto* const known = environment.findChild<TaskHistory*>({}, Qt::FindDirectChildrenOnly);
    return known != nullptr ? *known : *new TaskHistory(environment);
}

TaskHistory::TaskHistory(AppEnvironment& environment)
    : QObject(&environment), environment_(environment) {}

bool TaskHistory::record(
    const Affected& affected, QWidget* parent, const std::function<Made()>& act) {
    const Labels labels = affected.withLabels ? Labels::read : Labels::unread;
    Change change{.entries = entriesOf(affected, labels), .completedCopies = {}};
    const Made made = act();
    lookAgain(change, made, labels);
    if (change.entries.empty()) {
        return !environment_.context().hasChanges() || environment_.save(parent);
    }
    const bool isStep = !affected.endsTyping || !endTyping(change);
    const QString sentence = isStep ? sentenceOf(change) : QString();
    if (isStep) changes_.push_back(std::move(change));
    if (changes_.size() > mostKept) changes_.pop_front();
    undone_.clear();
    const bool isSaved = environment_.save(parent);
    emit lastChanged(sentence);
    emit turned();
    return isSaved;
}

void TaskHistory::undo(QWidget* parent) {
    const auto canBeTakenBack = [this](const Entry& entry) {
        return !entry.after || find(entry.task) != nullptr;
    };
    // Of tasks that others have deleted nothing can be taken back.
    while (!changes_.empty() && std::ranges::none_of(changes_.back().entries, canBeTakenBack)) {
        changes_.pop_back();
    }
    if (changes_.empty()) return emit turned();
    const Change last = std::move(changes_.back());
    changes_.pop_back();
    const Tasks stayed = takeBack(last);
    const bool isAnything = environment_.context().hasChanges();
    environment_.save(parent);
    emit lastChanged({});  // no bar offers to take back the one before
    tellTakenBack(last, stayed, isAnything);
    if (isAnything) undone_.push_back(last);
    emit turned();
}

void TaskHistory::redo(QWidget* parent) {
    if (undone_.empty()) return;
    Change next = std::move(undone_.back());
    undone_.pop_back();
    if (next.completedCopies.empty()) {
        takeBack(reversed(next));
    } else if (auto again = completedAgain(next)) {
        next = std::move(*again);
    }
    const bool isAnything = environment_.context().hasChanges();
    environment_.save(parent);
    const QString sentence = isAnything ? sentenceOf(next) : QString();
    emit lastChanged(sentence);
    if (!isAnything) {
        undone_.clear();
        tellTakenBack(next, {}, isAnything);
    } else {
        if (sentence.isEmpty()) tellTurned(next, sentenceAfterRedo(next));
        changes_.push_back(std::move(next));
    }
    emit turned();
}

CDTask* TaskHistory::find(const Uuid& task) const {
    return environment_.context().find<CDTask>(task);
}

TaskHistory::State TaskHistory::stateOf(const CDTask& task, Labels labels) {
    State state{
        .title = task.title.get(),
        .details = task.details.get(),
        .due = {task.dueDate.get(), task.dueHasTime.get()},
        .place = {idOf(task.project.get()), idOf(task.parent.get())},
        .linkedNote = idOf(task.linkedNote.get()),
        .labels = {},
        .reminderAt = task.reminderAt.get(),
        .completedAt = task.completedAt.get(),
        .createdAt = task.createdAt.get(),
        .recurrenceRule = task.recurrenceRule.get(),
        .priority = task.priority.get(),
        .sortIndex = task.sortIndex.get()};
    if (labels == Labels::unread) return state;
    for (const CDTag* label : task.labels.all()) {
        state.labels.insert(*label->id);
    }
    return state;
}

std::vector<TaskHistory::Entry> TaskHistory::entriesOf(
    const Affected& affected, Labels labels) const {
    std::vector<Entry> entries;
    std::set<Uuid> known;
    const auto add = [&](const Tasks& tasks, bool isAlong) {
        for (const Uuid& id : tasks) {
            const CDTask* const task = find(id);
            if (task == nullptr || !known.insert(id).second) continue;
            entries.push_back(
                {.task = id, .isAlong = isAlong, .before = stateOf(*task, labels), .after = {}});
        }
    };
    add(affected.tasks, false);
    add(affected.along, true);
    return entries;
}

/// Adds how the tasks are now, and those that were made; what stayed as it was goes.
void TaskHistory::lookAgain(Change& change, const Made& made, Labels labels) const {
    for (Entry& entry : change.entries) {
        const CDTask* const task = find(entry.task);
        if (task == nullptr || task->isDeleted()) continue;
        entry.after = stateOf(*task, labels);
        // Long texts are not kept fifty times.
        if (entry.before->title == entry.after->title) {
            entry.before->title = entry.after->title = std::nullopt;
        }
        if (entry.before->details == entry.after->details) {
            entry.before->details = entry.after->details = std::nullopt;
        }
    }
    std::erase_if(change.entries, [](const Entry& entry) { return entry.before == entry.after; });
    for (const Uuid& id : made.tasks) {
        const CDTask& task = *find(id);
        change.entries.push_back(
            {.task = id,
             .isAlong = task.parent != nullptr && std::ranges::count(made.tasks, *task.parent->id),
             .before = {},
             .after = stateOf(task, Labels::read)});
    }
    change.completedCopies = made.completedCopies;
}

TaskHistory::Change TaskHistory::reversed(Change change) {
    for (Entry& entry : change.entries) {
        std::swap(entry.before, entry.after);
    }
    return change;
}

/// Drops the steps of a text that is again as it was before the first of them; false when there are
/// none.
bool TaskHistory::endTyping(const Change& change) {
    if (!isOfText(change)) return false;
    const Entry& end = change.entries.front();
    for (auto step = changes_.rbegin(); step != changes_.rend() && isOfText(*step); ++step) {
        const Entry& begin = step->entries.front();
        const bool isSameText =
            begin.task == end.task
            && begin.before->title.has_value() == end.after->title.has_value()
            && begin.before->details.has_value() == end.after->details.has_value();
        if (!isSameText) return false;
        if (begin.before == end.after) {
            changes_.erase(std::prev(step.base()), changes_.end());
            return true;
        }
    }
    return false;
}

/// Completes the tasks again, of which some repeat: they get other copies than the first time.
/// None, and nothing is done, where one of them is not as it was before.
std::optional<TaskHistory::Change> TaskHistory::completedAgain(const Change& change) const {
    Affected affected;
    for (const Entry& entry : change.entries) {
        if (entry.isAlong) continue;
        const CDTask* const task = find(entry.task);
        if (task == nullptr) return std::nullopt;
        const State now = stateOf(*task, Labels::unread);
        const bool isAsBefore = now.due == entry.before->due
                                && now.completedAt == entry.before->completedAt
                                && now.recurrenceRule == entry.before->recurrenceRule;
        if (!isAsBefore) return std::nullopt;
        affected.tasks.push_back(entry.task);
        for (const CDTask* const subtask : task->subtasks.all()) {
            affected.along.push_back(*subtask->id);
        }
    }
    Change again{.entries = entriesOf(affected, Labels::unread), .completedCopies = {}};
    Made made;
    for (const Uuid& id : affected.tasks) {
        const CDTask* const copy = environment_.tasks().complete(
            environment_.context(), *find(id), environment_.calendar());
        if (copy != nullptr) made.completedCopies.push_back(*copy->id);
    }
    lookAgain(again, made, Labels::unread);
    return again;
}

/// Returns the tasks that it made and that are kept because they are not as they were then.
TaskHistory::Tasks TaskHistory::takeBack(const Change& change) const {
    StoreContext& context = environment_.context();
    for (const Uuid& id : change.completedCopies) {
        CDTask* const copy = find(id);
        if (copy != nullptr) environment_.tasks().remove(context, *copy);
    }
    for (const bool areSubtasks : {false, true}) {
        for (const Entry& entry : change.entries) {
            const bool isSubtask = entry.before && entry.before->place.parent;
            if (!entry.after && isSubtask == areSubtasks) bringBack(entry);
        }
    }
    Tasks stayed;
    for (const Entry& entry : change.entries) {
        CDTask* const task = find(entry.task);
        if (task == nullptr || !entry.after) continue;
        if (entry.before) {
            putBack(*task, *entry.before, *entry.after);
        } else if (entry.isAlong) {
            continue;  // it goes or stays with its task
        } else if (isAsMade(*task, change)) {
            environment_.tasks().remove(context, *task);
        } else {
            stayed.push_back(entry.task);
        }
    }
    return stayed;
}

/// Whether nobody has changed a task that the change made, nor given it further subtasks.
bool TaskHistory::isAsMade(const CDTask& task, const Change& change) const {
    const auto entry = std::ranges::find(change.entries, *task.id, &Entry::task);
    if (entry == change.entries.end() || entry->before) return false;
    if (stateOf(task, Labels::read) != entry->after) return false;
    return std::ranges::all_of(
        task.subtasks.all(), [&](const CDTask* subtask) { return isAsMade(*subtask, change); });
}

/// Under its own identifier, so that earlier changes of it can be taken back too. What it belonged
/// to may be gone; it stands in the Inbox then.
void TaskHistory::bringBack(const Entry& entry) const {
    StoreContext& context = environment_.context();
    if (find(entry.task) != nullptr) return;
    const State& state = *entry.before;
    CDTask* parent = state.place.parent ? find(*state.place.parent) : nullptr;
    if (parent != nullptr && parent->parent != nullptr) parent = nullptr;
    CDProject* project = parent != nullptr ? parent->project.get() : nullptr;
    if (project == nullptr && state.place.project) {
        project = context.find<CDProject>(*state.place.project);
    }
    if (project == nullptr) project = &environment_.projects().inbox(context);

    auto& task = context.insert<CDTask>();
    task.id = entry.task;
    task.title = state.title;
    task.details = state.details;
    task.dueDate = state.due.date;
    task.dueHasTime = state.due.hasTime;
    task.reminderAt = state.reminderAt;
    task.priority = state.priority;
    task.completedAt = state.completedAt;
    task.recurrenceRule = state.recurrenceRule;
    task.createdAt = state.createdAt;
    task.sortIndex = state.sortIndex;
    task.updatedAt = environment_.now();
    task.project = project;
    task.parent = parent;
    if (state.linkedNote) task.linkedNote = context.find<CDNote>(*state.linkedNote);
    putBackLabels(task, state, {});
}

void TaskHistory::putBack(CDTask& task, const State& before, const State& after) const {
    const State now = stateOf(task, Labels::unread);
    if (before.place != after.place && now.place == after.place) putBack(task, before.place);
    if (before.due != after.due && now.due == after.due) {
        task.dueDate = before.due.date;
        task.dueHasTime = before.due.hasTime;
    }
    if (before.linkedNote != after.linkedNote && now.linkedNote == after.linkedNote) {
        task.linkedNote =
            before.linkedNote ? environment_.context().find<CDNote>(*before.linkedNote) : nullptr;
    }
    // A subtask that comes back to its task was put behind the others of it.
    if (now.sortIndex == after.sortIndex) task.sortIndex = before.sortIndex;
    putBackIn(task.title, before.title, after.title);
    putBackIn(task.details, before.details, after.details);
    putBackIn(task.reminderAt, before.reminderAt, after.reminderAt);
    putBackIn(task.completedAt, before.completedAt, after.completedAt);
    putBackIn(task.recurrenceRule, before.recurrenceRule, after.recurrenceRule);
    putBackIn(task.priority, before.priority, after.priority);
    putBackLabels(task, before, after);
    if (task.isChanged()) task.updatedAt = environment_.now();
}

void TaskHistory::putBackLabels(CDTask& task, const State& before, const State& after) const {
    const auto change = [&](const std::set<Uuid>& labels, const std::set<Uuid>& others, auto act) {
        for (const Uuid& id : labels) {
            auto* const label =
                others.contains(id) ? nullptr : environment_.context().find<CDTag>(id);
            if (label != nullptr) act(*label);
        }
    };
    if (before.labels == after.labels) return;
    change(after.labels, before.labels, [&](CDTag& label) { task.labels.remove(label); });
    change(before.labels, after.labels, [&](CDTag& label) { task.labels.add(label); });
    task.updatedAt = environment_.now();
}

/// Unless the project, or the task that it was part of, is gone. Subtasks go with their task.
void TaskHistory::putBack(CDTask& task, const Place& place) const {
    StoreContext& context = environment_.context();
    if (place.parent) {
        CDTask* const parent = find(*place.parent);
        if (parent != nullptr) environment_.tasks().setParent(context, task, parent);
    } else if (place.project) {
        auto* const project = context.find<CDProject>(*place.project);
        if (project != nullptr) environment_.tasks().moveToProject(context, task, *project);
    }
}

/// The task, or so many: "“Plan”", "3 tasks".
QString TaskHistory::subjectOf(const Change& change) const {
    const auto isChosen = [](const Entry& entry) { return !entry.isAlong; };
    const auto count = std::ranges::count_if(change.entries, isChosen);
    if (count != 1) return QString("%L1 tasks").arg(count);
    const auto& [id, isAlong, before, after] = *std::ranges::find_if(change.entries, isChosen);
    const CDTask* const task = find(id);
    const auto& title = task != nullptr ? task->title.get() : before ? before->title : after->title;
    return QString("“%1”").arg(briefTitle(QString::fromStdString(title.value_or(""))));
}

QString TaskHistory::sentenceOf(const Change& change) const {
    const auto isChosen = [](const Entry& entry) { return !entry.isAlong; };
    const auto first = std::ranges::find_if(change.entries, isChosen);
    if (first == change.entries.end() || !first->before) return {};
    const QString what = subjectOf(change);
    const bool isOne = std::ranges::count_if(change.entries, isChosen) == 1;
    if (!first->after) return "Deleted " + what;
    const State& before = *first->before;
    const State& after = *first->after;
    const bool isCompleted = after.completedAt && !before.completedAt;
    if (isCompleted || !change.completedCopies.empty()) return "Completed " + what;
    if (before.recurrenceRule != after.recurrenceRule) return {};
    if (before.due != after.due) return dueSentence(what, isOne, after.due);
    if (before.place == after.place || !after.place.project) return {};
    const auto* const project = environment_.context().find<CDProject>(*after.place.project);
    const std::string name = project == nullptr ? "" : project->name.valueOr("");
    return QString("Moved %1 to ").arg(what) + briefTitle(QString::fromStdString(name));
}

void TaskHistory::tellTakenBack(const Change& change, const Tasks& stayed, bool isAnything) {
    if (!stayed.empty() || !isAnything) {
        const auto isOne = stayed.size() == 1 || change.entries.size() == 1;
        const Uuid& first = stayed.empty() ? change.entries.front().task : stayed.front();
        const CDTask* const task = find(first);
        const std::string title = task == nullptr ? "" : task->title.valueOr("");
        const QString what =
            isOne ? QString("“%1”").arg(briefTitle(QString::fromStdString(title))) : "Some tasks";
        const char* const verbs = isOne ? " was changed since and stays as it is"
                                        : " were changed since and stay as they are";
        emit takenBack(what + verbs, {}, Seen::inLists);
        return;
    }
    tellTurned(change, sentenceAfterUndo(change));
}

void TaskHistory::tellTurned(const Change& change, const QString& sentence) {
    Tasks tasks;
    std::ranges::transform(change.entries, std::back_inserter(tasks), &Entry::task);
    emit takenBack(sentence, tasks, whereSeen(change));
}

/// Whether words of one task were typed, and nothing else.
bool TaskHistory::isOfText(const Change& change) {
    if (change.entries.size() != 1) return false;
    const Entry& entry = change.entries.front();
    if (!entry.before || !entry.after) return false;
    State state = *entry.before;
    state.title = entry.after->title;
    state.details = entry.after->details;
    return state == entry.after;
}

bool TaskHistory::isOfNotes(const Change& change) {
    return isOfText(change) && !change.entries.front().after->title;
}

TaskHistory::Seen TaskHistory::whereSeen(const Change& change) {
    const auto isInLists = [](const Entry& entry) {
        if (!entry.before || !entry.after) return true;
        State state = *entry.before;
        state.details = entry.after->details;
        state.linkedNote = entry.after->linkedNote;
        state.reminderAt = entry.after->reminderAt;
        state.recurrenceRule = entry.after->recurrenceRule;
        return state != entry.after;
    };
    return std::ranges::any_of(change.entries, isInLists) ? Seen::inLists : Seen::inPanel;
}

/// How things are now, so that nobody takes what was taken back for it.
QString TaskHistory::sentenceAfterUndo(const Change& change) const {
    const auto isChosen = [](const Entry& entry) { return !entry.isAlong; };
    const auto first = std::ranges::find_if(change.entries, isChosen);
    if (first == change.entries.end()) return "Taken back: the last change";
    const QString what = subjectOf(change);
    const bool isOne = std::ranges::count_if(change.entries, isChosen) == 1;
    const QString are = isOne ? " is " : " are ";
    if (!first->before) return QString("Taken back: ") + (isOne ? "new task " : "") + what;
    if (!first->after) return what + are + "back";
    const State& before = *first->before;
    const State& after = *first->after;
    const bool wasCompleted = after.completedAt && !before.completedAt;
    if (wasCompleted || !change.completedCopies.empty()) return what + are + "open again";
    if (!isOne) return what + " are as they were";
    if (isOfNotes(change)) return "The notes of " + what + " are as they were";
    if (before.due != after.due && before.recurrenceRule == after.recurrenceRule) {
        return before.due.date ? dueSentence(what, isOne, before.due) + " again"
                               : what + " has no date again";
    }
    return what + " is as it was";
}

/// Of what was done without words.
QString TaskHistory::sentenceAfterRedo(const Change& change) const {
    const auto isChosen = [](const Entry& entry) { return !entry.isAlong; };
    const auto count = std::ranges::count_if(change.entries, isChosen);
    if (count == 0) return "Done again: the last change";
    const QString what = subjectOf(change);
    if (isOfNotes(change)) return "The notes of " + what + " are changed again";
    const auto wasThere = [](const Entry& entry) { return entry.before.has_value(); };
    const bool isMade = std::ranges::none_of(change.entries, wasThere);
    return what + (count == 1 ? " is " : " are ") + (isMade ? "back" : "changed again");
}

/// Several may have kept times of their own.
QString TaskHistory::dueSentence(const QString& what, bool isOne, const Due& due) const {
    if (!due.date) return what + (isOne ? " has no date any more" : " have no date any more");
    const TaskWords words(environment_.now(), environment_.calendar());
    const QString day =
        words.due({.date = *due.date, .hasTime = isOne && due.hasTime.value_or(false)});
    return what + (isOne ? " is due " : " are due ") + withinSentence(day);
}

}  // namespace tesserine::app
