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

void TaskHistory::record(
    const Affected& affected, QWidget* parent, const std::function<Tasks()>& act) {
    Change change{.entries = entriesOf(affected), .completedCopies = {}};
    change.completedCopies = act();
    for (Entry& entry : change.entries) {
        entry.after = stateOf(*find(entry.task));
    }
    std::erase_if(change.entries, [](const Entry& entry) { return entry.before == entry.after; });
    if (change.entries.empty()) {
        if (environment_.context().hasChanges()) saveForGood(parent);
        return;
    }
    const QString sentence = sentenceOf(change);
    changes_.push_back(std::move(change));
    if (changes_.size() > mostKept) changes_.pop_front();
    environment_.save(parent);
    emit lastChanged(sentence);
}

bool TaskHistory::saveForGood(QWidget* parent) {
    changes_.clear();
    const bool isSaved = environment_.save(parent);
    emit lastChanged({});
    return isSaved;
}

void TaskHistory::undo(QWidget* parent) {
    const auto isThere = [this](const Entry& entry) { return find(entry.task) != nullptr; };
    // Of tasks that are deleted by now nothing can be taken back.
    while (!changes_.empty() && std::ranges::none_of(changes_.back().entries, isThere)) {
        changes_.pop_back();
    }
    if (changes_.empty()) return;
    const Change last = std::move(changes_.back());
    changes_.pop_back();
    const QString sentence = sentenceOf(last);
    for (const Uuid& id : last.completedCopies) {
        CDTask* const copy = find(id);
        if (copy != nullptr) environment_.tasks().remove(environment_.context(), *copy);
    }
    for (const Entry& entry : last.entries) {
        CDTask* const task = find(entry.task);
        if (task != nullptr) putBack(*task, entry.before, entry.after);
    }
    environment_.save(parent);
    emit lastChanged({});  // no bar offers to take back the one before
    Tasks tasks;
    std::ranges::transform(last.entries, std::back_inserter(tasks), &Entry::task);
    emit takenBack(
        "Taken back: " + (sentence.isEmpty() ? QString("the last change") : sentence), tasks);
}

CDTask* TaskHistory::find(const Uuid& task) const {
    return environment_.context().find<CDTask>(task);
}

TaskHistory::State TaskHistory::stateOf(const CDTask& task) {
    return {
        .due = {task.dueDate.get(), task.dueHasTime.get()},
        .place = {idOf(task.project.get()), idOf(task.parent.get())},
        .reminderAt = task.reminderAt.get(),
        .completedAt = task.completedAt.get(),
        .recurrenceRule = task.recurrenceRule.get(),
        .priority = task.priority.get(),
        .sortIndex = task.sortIndex.get()};
}

std::vector<TaskHistory::Entry> TaskHistory::entriesOf(const Affected& affected) const {
    std::vector<Entry> entries;
    std::set<Uuid> known;
    const auto add = [&](const Tasks& tasks, bool isAlong) {
        for (const Uuid& id : tasks) {
            const CDTask* const task = find(id);
            if (task == nullptr || !known.insert(id).second) continue;
            const State now = stateOf(*task);
            entries.push_back({.task = id, .isAlong = isAlong, .before = now, .after = now});
        }
    };
    add(affected.tasks, false);
    add(affected.along, true);
    return entries;
}

void TaskHistory::putBack(CDTask& task, const State& before, const State& after) const {
    const State now = stateOf(task);
    if (before.place != after.place && now.place == after.place) putBack(task, before.place);
    if (before.due != after.due && now.due == after.due) {
        task.dueDate = before.due.date;
        task.dueHasTime = before.due.hasTime;
    }
    // A subtask that comes back to its task was put behind the others of it.
    if (now.sortIndex == after.sortIndex) task.sortIndex = before.sortIndex;
    putBackIn(task.reminderAt, before.reminderAt, after.reminderAt);
    putBackIn(task.completedAt, before.completedAt, after.completedAt);
    putBackIn(task.recurrenceRule, before.recurrenceRule, after.recurrenceRule);
    putBackIn(task.priority, before.priority, after.priority);
    if (task.isChanged()) task.updatedAt = environment_.now();
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

QString TaskHistory::sentenceOf(const Change& change) const {
    const auto isChosen = [](const Entry& entry) { return !entry.isAlong; };
    const auto first = std::ranges::find_if(change.entries, isChosen);
    if (first == change.entries.end()) return {};
    const CDTask* const task = find(first->task);
    if (task == nullptr) return {};
    const QString title = QString::fromStdString(task->title.valueOr(""));
    const auto count = std::ranges::count_if(change.entries, isChosen);
    const bool isOne = count == 1;
    const QString what =
        isOne ? QString("“%1”").arg(briefTitle(title)) : QString("%L1 tasks").arg(count);
    const auto& [id, isAlong, before, after] = *first;
    const bool isCompleted = after.completedAt && !before.completedAt;
    if (isCompleted || !change.completedCopies.empty()) return "Completed " + what;
    if (before.recurrenceRule != after.recurrenceRule) return {};
    if (before.due != after.due) return dueSentence(what, isOne, after.due);
    if (before.place == after.place || !after.place.project) return {};
    const auto* const project = environment_.context().find<CDProject>(*after.place.project);
    const std::string name = project == nullptr ? "" : project->name.valueOr("");
    return QString("Moved %1 to ").arg(what) + briefTitle(QString::fromStdString(name));
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
