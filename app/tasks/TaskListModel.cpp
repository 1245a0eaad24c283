#include "app/tasks/TaskListModel.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskWords.h"
#include "core/tasks/TaskSnapshot.h"

#include <QMimeData>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace tesserine::app {
namespace {

constexpr const char* overdueGroup = "Overdue";

bool concerns(const std::vector<ObjectChange>& changes, EntityKind entity) {
    return std::ranges::any_of(
        changes, [entity](const ObjectChange& change) { return change.entity == entity; });
}

bool standForTheSame(const TaskRow& a, const TaskRow& b) {
    return a.id == b.id && a.heading == b.heading && a.isSubtask == b.isSubtask;
}

bool hasGroups(TaskView::Kind kind) {
    return kind == TaskView::Kind::today || kind == TaskView::Kind::upcoming
           || kind == TaskView::Kind::completed;
}

/// Whether the groups of the view are the days on which tasks are due.
bool isDay(TaskView::Kind kind) {
    return kind == TaskView::Kind::today || kind == TaskView::Kind::upcoming;
}

/// Finds lines by what they stand for, whatever they show.
class Places {
public:
    explicit Places(const std::vector<TaskRow>& lines) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            places_.emplace(key(lines[i]), static_cast<int>(i));
        }
    }
    bool hold(const TaskRow& line) const { return places_.contains(key(line)); }
    /// -1 for a line that is not there.
    int of(const TaskRow& line) const {
        const auto found = places_.find(key(line));
        return found == places_.end() ? -1 : found->second;
    }

private:
    struct Key {
        Uuid id;
        QString heading;
        bool isSubtask = false;
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct Hash {
        std::size_t operator()(const Key& key) const {
            return std::hash<Uuid>()(key.id) ^ qHash(key.heading);
        }
    };
    static Key key(const TaskRow& line) { return {line.id, line.heading, line.isSubtask}; }
    std::unordered_map<Key, int, Hash> places_;
};

}  // namespace

TaskListModel::TaskListModel(AppEnvironment& environment, QObject* parent)
    : QAbstractListModel(parent), environment_(environment) {
    connect(&environment, &AppEnvironment::libraryChanged, this, [this](const auto& changes) {
        follow(changes);
    });
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] { setView(view_); });
}

void TaskListModel::setView(const TaskView& view) {
    view_ = view;
    held_.clear();
    Page page = read(0, pageSize);
    beginResetModel();
    lines_ = std::move(page.lines);
    taskCount_ = page.taskCount;
    isEnd_ = page.isEnd;
    endResetModel();
}

std::optional<std::size_t> TaskListModel::taskCount() const {
    return isEnd_ ? std::optional(taskCount_) : std::nullopt;
}

// Reading

QString TaskListModel::groupOf(const CDTask& task) const {
    const Calendar& calendar = environment_.calendar();
    const TaskWords words(environment_.now(), calendar);
    switch (view_.kind()) {
    case TaskView::Kind::today: {
        const bool isOverdue = *task.dueDate < calendar.startOfDay(environment_.now());
        return isOverdue ? QString(overdueGroup) : words.day(environment_.now());
    }
    case TaskView::Kind::upcoming: return words.day(*task.dueDate);
    case TaskView::Kind::completed: return words.day(*task.completedAt);
    case TaskView::Kind::project:
    case TaskView::Kind::label:
    case TaskView::Kind::inbox:
    case TaskView::Kind::all: break;
    }
    return {};
}

TaskListModel::Page TaskListModel::read(std::size_t offset, std::size_t limit) const {
    FetchRequest request = view_.request(environment_.now(), environment_.calendar());
    request.offset = offset;
    request.limit = limit;
    const auto tasks = environment_.context().fetch<CDTask>(request);
    Page page{.taskCount = tasks.size(), .isEnd = tasks.size() < limit};
    QString group;
    if (offset > 0) {
        const auto last = std::find_if(
            lines_.rbegin(), lines_.rend(), [](const TaskRow& line) { return !line.isTask(); });
        if (last != lines_.rend()) group = last->heading;
    }
    for (const CDTask* task : tasks) {
        const QString own = groupOf(*task);
        if (own != group) page.lines.push_back(TaskRow::group(own, own == overdueGroup));
        group = own;
        appendTask(page.lines, *task, isDay(view_.kind()) && own != overdueGroup);
    }
    return page;
}

void TaskListModel::appendTask(
    std::vector<TaskRow>& lines, const CDTask& task, bool isBelowItsDay) const {
    const bool isOfOneProject =
        view_.kind() == TaskView::Kind::project || view_.kind() == TaskView::Kind::inbox;
    const auto line = [&](const CDTask& of) {
        TaskRow row = TaskRow::of(of, environment_.collator());
        if (isOfOneProject || row.isSubtask) row.project.clear();
        return row;
    };
    lines.push_back(line(task));
    lines.back().isBelowItsDay = isBelowItsDay;
    // Completed subtasks stand in the view of completed tasks by themselves.
    if (view_.kind() == TaskView::Kind::completed) return;
    if (lines.back().subtaskCount == 0 || !expanded_.contains(lines.back().id)) return;
    lines.back().isExpanded = true;
    for (const CDTask* subtask : subtasksInOrder(task)) {
        lines.push_back(line(*subtask));
    }
}

bool TaskListModel::canFetchMore(const QModelIndex& parent) const {
    return !parent.isValid() && !isEnd_;
}

void TaskListModel::fetchMore(const QModelIndex& /*parent*/) {
    const Page more = read(taskCount_, pageSize);
    taskCount_ += more.taskCount;
    isEnd_ = more.isEnd;
    if (more.lines.empty()) return;
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(more.lines.size()) - 1);
    lines_.insert(lines_.end(), more.lines.begin(), more.lines.end());
    endInsertRows();
}

TaskListModel::Page TaskListModel::readAgain(
    std::size_t limit, const std::set<Uuid>& changed) const {
    std::unordered_map<Uuid, const TaskRow*> unchanged;
    for (const TaskRow& line : lines_) {
        const bool isAlone = line.subtaskCount == 0 && !line.isSubtask;
        const bool mayDiffer = changed.contains(line.id) || held_.contains(line.id);
        if (isAlone && !mayDiffer) unchanged.emplace(line.id, &line);
    }
    FetchRequest request = view_.request(environment_.now(), environment_.calendar());
    request.limit = limit;
    std::vector<Uuid> tasks;
    StoreContext& context = environment_.context();
    context.visitRows<CDTask>(request, [&tasks](const ListedRow& row) {
        tasks.push_back(row.get(&CDTask::id).value_or(Uuid()));
    });
    Page page{.taskCount = tasks.size(), .isEnd = tasks.size() < limit};
    for (const Uuid& id : tasks) {
        const auto found = unchanged.find(id);
        if (found != unchanged.end()) {
            page.lines.push_back(*found->second);
        } else if (const CDTask* const task = context.find<CDTask>(id)) {
            appendTask(page.lines, *task, false);
        }
    }
    return page;
}

void TaskListModel::follow(const std::vector<ObjectChange>& changes) {
    // Lines show the names of projects and labels.
    if (concerns(changes, EntityKind::project) || concerns(changes, EntityKind::tag)) {
        return reload();
    }
    if (!concerns(changes, EntityKind::task)) return;
    std::set<Uuid> changed;
    for (const ObjectChange& change : changes) {
        if (change.entity != EntityKind::task || !change.uuid) continue;
        changed.insert(*change.uuid);
        // A task that had subtasks is read anyway.
        const CDTask* const task = environment_.context().find<CDTask>(*change.uuid);
        const CDTask* const parent = task == nullptr ? nullptr : task->parent.get();
        if (parent != nullptr && parent->id) changed.insert(*parent->id);
    }
    reloadChanged(changed);
}

std::size_t TaskListModel::countToRead() const {
    // A page more than there is, so that an added task is not beyond the end.
    return isEnd_ ? taskCount_ + pageSize : taskCount_;
}

void TaskListModel::reload() { show(read(0, countToRead())); }

void TaskListModel::reloadChanged(const std::set<Uuid>& changed) {
    if (hasGroups(view_.kind())) return reload();
    show(readAgain(countToRead(), changed));
}

void TaskListModel::show(Page page) {
    taskCount_ = page.taskCount;
    isEnd_ = page.isEnd;
    keepHeld(page.lines);
    replaceLines(page.lines);
    emit reloaded();
}

void TaskListModel::setExpanded(const Uuid& task, bool isExpanded) {
    if (isExpanded) {
        expanded_.insert(task);
    } else {
        expanded_.erase(task);
    }
    reloadChanged({task});
}

void TaskListModel::release(const Uuid& task) {
    if (held_.erase(task) != 0) reloadChanged({task});
}

void TaskListModel::keepHeld(std::vector<TaskRow>& lines) const {
    for (const Uuid& task : held_) {
        const QModelIndex index = indexOf(task);
        const Places places(lines);
        if (!index.isValid() || places.hold(line(index))) continue;
        int before = index.row() - 1;
        while (before >= 0 && !places.hold(line(before))) {
            --before;
        }
        TaskRow kept = line(index);
        kept.isCompleted = true;
        const int place = before < 0 ? 0 : places.of(line(before)) + 1;
        lines.insert(lines.begin() + place, std::move(kept));
    }
}

// From the lines that are shown to others, in steps that keep what is selected.

void TaskListModel::replaceLines(const std::vector<TaskRow>& lines) {
    if (std::ranges::equal(lines, lines_, standForTheSame)) return takeValues(lines);
    removeMissing(lines);
    bringIntoOrder(lines);
    insertNew(lines);
    takeValues(lines);
}

void TaskListModel::removeMissing(const std::vector<TaskRow>& lines) {
    const Places wanted(lines);
    for (int last = rowCount() - 1; last >= 0; --last) {
        int first = last;
        while (first >= 0 && !wanted.hold(line(first))) {
            --first;
        }
        if (first == last) continue;
        beginRemoveRows({}, first + 1, last);
        lines_.erase(lines_.begin() + first + 1, lines_.begin() + last + 1);
        endRemoveRows();
        last = first;
    }
}

void TaskListModel::bringIntoOrder(const std::vector<TaskRow>& lines) {
    const Places present(lines_);
    std::vector<TaskRow> ordered;
    for (const TaskRow& wanted : lines) {
        if (present.hold(wanted)) ordered.push_back(line(present.of(wanted)));
    }
    if (ordered == lines_) return;
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const Places places(ordered);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    for (const QModelIndex& old : before) {
        after += index(places.of(line(old)));
    }
    lines_ = std::move(ordered);
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void TaskListModel::insertNew(const std::vector<TaskRow>& lines) {
    const Places present(lines_);
    const auto isNew = [&](std::size_t place) {
        return place < lines.size() && !present.hold(lines[place]);
    };
    for (std::size_t first = 0; first < lines.size(); ++first) {
        std::size_t end = first;
        while (isNew(end)) {
            ++end;
        }
        if (end == first) continue;
        const auto offset = [](std::size_t place) { return static_cast<std::ptrdiff_t>(place); };
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(end) - 1);
        lines_.insert(
            lines_.begin() + offset(first),
            lines.begin() + offset(first),
            lines.begin() + offset(end));
        endInsertRows();
        first = end - 1;
    }
}

void TaskListModel::takeValues(const std::vector<TaskRow>& lines) {
    for (int row = 0; row < rowCount(); ++row) {
        TaskRow& shown = lines_[static_cast<std::size_t>(row)];
        const TaskRow& wanted = lines[static_cast<std::size_t>(row)];
        if (shown == wanted) continue;
        shown = wanted;
        emit dataChanged(index(row), index(row));
    }
}

// The model

QModelIndex TaskListModel::indexOf(const Uuid& task) const {
    const auto found = std::ranges::find_if(
        lines_, [&](const TaskRow& line) { return line.isTask() && line.id == task; });
    if (found == lines_.end()) return {};
    return index(static_cast<int>(found - lines_.begin()));
}

int TaskListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant TaskListModel::data(const QModelIndex& index, int role) const {
    const TaskRow& row = line(index);
    if (!row.isTask()) return role == Qt::DisplayRole ? row.heading : QVariant();
    if (role == Qt::DisplayRole) return shownTitle(row.title);
    if (role != Qt::AccessibleTextRole) return {};
    const TaskWords words(environment_.now(), environment_.calendar());
    QStringList parts{shownTitle(row.title)};
    if (row.isCompleted) parts += "completed";
    if (row.due()) {
        parts +=
            (words.isOverdue(*row.due()) ? "overdue since " : "due ") + words.longDue(*row.due());
    }
    if (row.priority != TaskPriority::p4) {
        parts += QString("priority %1").arg(static_cast<int>(row.priority));
    }
    if (row.repeats) parts += "repeats";
    if (!row.labels.isEmpty()) parts += "labels " + row.labels.join(", ");
    return parts.join(", ");
}

Qt::ItemFlags TaskListModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || !line(index).isTask()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled
           | Qt::ItemNeverHasChildren;
}

std::vector<Uuid> TaskListModel::tasksOf(const QModelIndexList& indexes) const {
    std::vector<int> rows;
    for (const QModelIndex& index : indexes) {
        if (line(index).isTask()) rows.push_back(index.row());
    }
    std::ranges::sort(rows);
    std::vector<Uuid> tasks;
    for (const int row : rows) {
        tasks.push_back(line(row).id);
    }
    return tasks;
}

QStringList TaskListModel::mimeTypes() const { return {tasksMimeType}; }

QMimeData* TaskListModel::mimeData(const QModelIndexList& indexes) const {
    const auto tasks = tasksOf(indexes);
    QStringList titles;
    for (const Uuid& task : tasks) {
        titles += line(indexOf(task)).title;
    }
    return mimeDataOf(tasks, titles);
}

QMimeData* mimeDataOf(const std::vector<Uuid>& tasks, const QStringList& titles) {
    QByteArray ids;
    for (const Uuid& task : tasks) {
        ids += QByteArray::fromStdString(task.text()) + '\n';
    }
    auto* const data = new QMimeData;
    data->setData(tasksMimeType, ids);
    data->setText(titles.join('\n'));
    return data;
}

std::vector<Uuid> draggedTasks(const QMimeData& data) {
    std::vector<Uuid> tasks;
    for (const QByteArray& line : data.data(tasksMimeType).split('\n')) {
        if (const auto id = Uuid::parse(line.toStdString())) tasks.push_back(*id);
    }
    return tasks;
}

}  // namespace tesserine::app
