#include "app/tasks/TaskListModel.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskWords.h"
#include "core/tasks/Places.h"
#include "core/tasks/TaskSnapshot.h"

#include <QMimeData>

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>
#include <utility>

namespace tesserine::app {
namespace {

using Kind = TaskLine::Kind;

bool standForTheSame(const TaskLine& a, const TaskLine& b) {
    return a.kind == b.kind && a.id == b.id && a.place.day == b.place.day;
}

}  // namespace

TaskListModel::TaskListModel(AppEnvironment& environment, QObject* parent)
    : QAbstractListModel(parent),
      environment_(environment),
      rows_(environment.store(), environment.collator()),
      listing_(TaskView::today(), environment.now(), environment.calendar()) {
    connect(&environment, &AppEnvironment::libraryChanged, this, &TaskListModel::follow);
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] {
        inTurn_.run([this] {
            emit aboutToBeReadAnew();
            show(view());
            emit readAnew();
        });
    });
}

void TaskListModel::setView(const TaskView& view) {
    inTurn_.run([this, view] { show(view); });
}

void TaskListModel::show(const TaskView& view) {
    listing_ = TaskListing(view, environment_.now(), environment_.calendar());
    held_.clear();
    rows_.forget();
    auto entries = listing_.first(rows_.context(), beginning);
    isComplete_ = entries.size() < beginning;
    beginResetModel();
    lines_ = linesOf(std::move(entries));
    endResetModel();
    ++reading_;
    isReading_ = false;
    if (!isComplete_) readRest();
    emit settled();
}

std::optional<std::size_t> TaskListModel::taskCount() const {
    if (!isComplete_) return std::nullopt;
    return static_cast<std::size_t>(std::ranges::count(lines_, Kind::task, &TaskLine::kind));
}

// All of the list

void TaskListModel::readRest() {
    isReading_ = true;
    auto entries =
        std::make_shared<std::vector<TaskEntry>>();  // of the worker, then of this thread
    environment_.inBackground(
        [entries, listing = listing_](StoreContext& context, const std::stop_token& /*stop*/) {
            *entries = listing.all(context);
        },
        this,
        [this, entries, reading = ++reading_] {
            inTurn_.run([this, entries, reading] {
                if (reading == reading_) take(std::move(*entries));
            });
        });
}

void TaskListModel::take(std::vector<TaskEntry> entries) {
    isReading_ = false;
    isComplete_ = true;
    Lines lines = linesOf(std::move(entries));
    const bool goesOn =
        lines.size() >= lines_.size()
        && std::ranges::equal(lines_, std::span(lines).first(lines_.size()), standForTheSame);
    if (!goesOn) {
        emit aboutToBeReadAnew();
        beginResetModel();
        lines_ = std::move(lines);
        endResetModel();
        emit readAnew();
    } else if (lines.size() > lines_.size()) {
        beginInsertRows({}, rowCount(), static_cast<int>(lines.size()) - 1);
        lines_ = std::move(lines);
        endInsertRows();
    } else {
        lines_ = std::move(lines);
        if (!lines_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
    }
    emit settled();
}

TaskListModel::Lines TaskListModel::linesOf(std::vector<TaskEntry> entries) const {
    if (!held_.empty()) {
        std::erase_if(entries, [this](const TaskEntry& entry) { return held_.contains(entry.id); });
    }
    for (const auto& [task, entry] : held_) {
        const auto isBefore = [&](const TaskEntry& one, const TaskEntry& other) {
            return listing_.isBefore(one, other);
        };
        entries.insert(std::ranges::lower_bound(entries, entry, isBefore), entry);
    }
    Lines lines;
    lines.reserve(entries.size());
    for (const TaskEntry& entry : entries) {
        const bool isFirst = lines.empty() || lines.back().place.day != entry.day;
        if (listing_.hasGroups() && isFirst) lines.push_back(heading(entry));
        std::ranges::copy(block(entry), std::back_inserter(lines));
    }
    return lines;
}

TaskLine TaskListModel::heading(const TaskEntry& entry) {
    return {.kind = Kind::heading, .place = {.day = entry.day}};
}

/// The line of a task, and below it those of its subtasks when it is expanded.
TaskListModel::Lines TaskListModel::block(const TaskEntry& entry) const {
    Lines lines{{.kind = Kind::task, .id = entry.id, .place = entry, .isTall = entry.isTall}};
    // Completed subtasks stand in the view of completed tasks by themselves.
    const bool isExpanded = expanded_.contains(entry.id);
    if (!isExpanded || view().kind() == TaskView::Kind::completed) return lines;
    const auto* task = rows_.context().find<CDTask>(entry.id);
    if (task == nullptr) return lines;
    for (const CDTask* subtask : subtasksInOrder(*task)) {
        TaskRow row = TaskRow::of(*subtask, environment_.collator());
        row.project.clear();
        lines.push_back(
            {.kind = Kind::subtask, .id = row.id, .place = entry, .isTall = row.hasPieces()});
    }
    return lines;
}

// Single changes

void TaskListModel::follow(const std::vector<ObjectChange>& changes) {
    inTurn_.run([this, changes] { takeChanges(changes); });
}

void TaskListModel::takeChanges(const std::vector<ObjectChange>& changes) {
    rows_.forget();
    std::set<Uuid> tasks;
    bool areNamesGone = false;  // of labels and projects, below the titles of any tasks
    for (const ObjectChange& change : changes) {
        if (change.entity == EntityKind::task && change.uuid) tasks.insert(*change.uuid);
        const bool isName =
            change.entity == EntityKind::tag || change.entity == EntityKind::project;
        areNamesGone |= isName && change.kind == ChangeKind::deleted;
    }
    const bool isMuch = tasks.size() > mostSingleChanges;
    if (isMuch) isComplete_ = false;
    if (isComplete_) {
        for (const Uuid& task : concerned(tasks)) {
            update(task);
        }
    }
    if (areNamesGone || !isComplete_ || (isReading_ && !tasks.empty())) readRest();
    // Names of projects and labels, counts of subtasks: what any line shows may have changed.
    if (!lines_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
    emit settled();
}

/// The tasks, and those above that have or had them as subtasks.
std::set<Uuid> TaskListModel::concerned(const std::set<Uuid>& tasks) const {
    std::set<Uuid> all = tasks;
    for (const TaskLine& line : lines_) {
        if (line.kind == Kind::subtask && tasks.contains(line.id)) all.insert(line.place.id);
    }
    for (const Uuid& id : tasks) {
        const auto* task = rows_.context().find<CDTask>(id);
        const CDTask* parent = task == nullptr ? nullptr : task->parent.get();
        if (parent != nullptr && parent->id) all.insert(*parent->id);
    }
    return all;
}

void TaskListModel::update(const Uuid& task) {
    const int row = rowOfTask(task);
    const auto entry = present(task);
    if (row < 0 && entry) return insert(*entry);
    if (row < 0) return;
    if (!entry) return remove(row);
    if (at(row).place != *entry) move(row, *entry);
    refreshBlock(rowOfTask(task));
}

/// The task's entry as it is to be shown now; none when it does not belong here.
std::optional<TaskEntry> TaskListModel::present(const Uuid& task) const {
    const auto held = held_.find(task);
    if (held != held_.end()) return held->second;
    return listing_.find(rows_.context(), task);
}

void TaskListModel::insert(const TaskEntry& entry) {
    const int row = placeOf(entry, rowCount(), rowCount());
    Lines lines = block(entry);
    if (needsHeading(row - 1, entry)) lines.insert(lines.begin(), heading(entry));
    insertLines(row, lines);
}

void TaskListModel::remove(int row) {
    removeLines(row, endOfBlock(row));
    removeLonelyHeading(row - 1);
}

/// Puts the task with its subtasks where `entry` belongs, and makes that its place.
void TaskListModel::move(int row, const TaskEntry& entry) {
    int end = endOfBlock(row);
    const int to = placeOf(entry, row, end);
    const bool stays = to == end;
    const int target = stays ? row : to;
    for (int each = row; each < end; ++each) {
        lines_[static_cast<std::size_t>(each)].place = entry;
    }

    int headings = 0;
    if (needsHeading(target - 1, entry)) {
        insertLines(target, {heading(entry)});
        headings = 1;
    }
    if (target <= row) {
        row += headings;
        end += headings;
    }
    if (!stays) moveLines(row, end, target + headings);
    // The line that stood above the task.
    removeLonelyHeading(stays ? row - 1 - headings : target > row ? row - 1 : end - 1);
}

/// Makes the lines below a task those of its present subtasks.
void TaskListModel::refreshBlock(int row) {
    const Lines wanted = block(at(row).place);
    const auto isOf = [](const Lines& lines, const TaskLine& line) {
        return std::ranges::find(lines, line.id, &TaskLine::id) != lines.end();
    };
    for (int below = endOfBlock(row) - 1; below > row; --below) {
        if (!isOf(wanted, at(below))) removeLines(below, below + 1);
    }
    int end = endOfBlock(row);
    for (const TaskLine& line : wanted) {
        const auto last = lines_.begin() + end;
        const auto found = std::find_if(
            lines_.begin() + row, last, [&](const TaskLine& each) { return each.id == line.id; });
        const int from = static_cast<int>(found - lines_.begin());
        if (from == end) {
            insertLines(row, {line});
            ++end;
        } else if (from != row) {
            moveLines(from, from + 1, row);
        }
        lines_[static_cast<std::size_t>(row)] = line;
        ++row;
    }
}

/// A heading that stands at the row goes when nothing stands below it.
void TaskListModel::removeLonelyHeading(int row) {
    if (row < 0 || at(row).kind != Kind::heading) return;
    const bool isLonely = row + 1 == rowCount() || at(row + 1).kind == Kind::heading;
    if (isLonely) removeLines(row, row + 1);
}

/// Where the entry goes among the lines other than those from `first` to before `last`.
int TaskListModel::placeOf(const TaskEntry& entry, int first, int last) const {
    const auto isBefore = [&](const TaskLine& line) { return this->isBefore(line, entry); };
    const auto begin = lines_.begin();
    const auto left = std::partition_point(begin, begin + first, isBefore);
    const auto right = std::partition_point(begin + last, lines_.end(), isBefore);
    return static_cast<int>((left == begin + first ? right : left) - begin);
}

bool TaskListModel::isBefore(const TaskLine& line, const TaskEntry& entry) const {
    if (line.isTask()) return listing_.isBefore(line.place, entry);
    return line.place.day == entry.day || listing_.isDayBefore(line.place, entry);
}

/// Whether an entry that comes to stand below the line `above` begins a group.
bool TaskListModel::needsHeading(int above, const TaskEntry& entry) const {
    return listing_.hasGroups() && (above < 0 || at(above).place.day != entry.day);
}

int TaskListModel::endOfBlock(int row) const {
    int end = row + 1;
    while (end < rowCount() && at(end).kind == Kind::subtask) {
        ++end;
    }
    return end;
}

void TaskListModel::setExpanded(const Uuid& task, bool isExpanded) {
    if (isExpanded) {
        expanded_.insert(task);
    } else {
        expanded_.erase(task);
    }
    inTurn_.run([this, task] {
        const int row = rowOfTask(task);
        if (row < 0) return;
        refreshBlock(row);
        emit dataChanged(index(row), index(row));
    });
}

void TaskListModel::hold(const Uuid& task) {
    const int row = rowOfTask(task);
    if (row >= 0) held_.emplace(task, at(row).place);
}

void TaskListModel::release(const Uuid& task) {
    if (held_.erase(task) == 0) return;
    follow(
        {{.kind = ChangeKind::updated,
          .entity = EntityKind::task,
          .key = 0,
          .uuid = task,
          .changed = {}}});
}

// Lines that come, go and move

void TaskListModel::insertLines(int row, const Lines& lines) {
    beginInsertRows({}, row, row + static_cast<int>(lines.size()) - 1);
    lines_.insert(lines_.begin() + row, lines.begin(), lines.end());
    endInsertRows();
}

void TaskListModel::removeLines(int row, int end) {
    beginRemoveRows({}, row, end - 1);
    lines_.erase(lines_.begin() + row, lines_.begin() + end);
    endRemoveRows();
}

/// Takes out the lines from `row` to before `end`, and puts them before that which stands at `to`.
void TaskListModel::moveLines(int row, int end, int to) {
    beginMoveRows({}, row, end - 1, {}, to);
    const auto first = lines_.begin();
    if (to > row) {
        std::rotate(first + row, first + end, first + to);
    } else {
        std::rotate(first + to, first + row, first + end);
    }
    endMoveRows();
}

// The model

int TaskListModel::rowOfTask(const Uuid& task) const {
    const auto found = std::ranges::find_if(
        lines_, [&](const TaskLine& line) { return line.kind == Kind::task && line.id == task; });
    return found == lines_.end() ? -1 : static_cast<int>(found - lines_.begin());
}

QModelIndex TaskListModel::indexOf(const Uuid& task) const {
    const auto found = std::ranges::find_if(
        lines_, [&](const TaskLine& line) { return line.isTask() && line.id == task; });
    return found == lines_.end() ? QModelIndex() : index(static_cast<int>(found - lines_.begin()));
}

TaskRow TaskListModel::line(int row) const {
    const TaskLine& line = at(row);
    if (!line.isTask()) {
        const TaskWords words(environment_.now(), environment_.calendar());
        return line.place.day ? TaskRow::group(words.day(*line.place.day))
                              : TaskRow::group("Overdue", true);
    }
    TaskRow shown = rows_.of(line.id);
    const bool isOfOneProject =
        view().kind() == TaskView::Kind::project || view().kind() == TaskView::Kind::inbox;
    if (isOfOneProject || shown.isSubtask) shown.project.clear();
    shown.isBelowItsDay = line.kind == Kind::task && listing_.isBelowItsDay(line.place);
    shown.isExpanded = expanded_.contains(line.id);
    shown.isCompleted = shown.isCompleted || held_.contains(line.id);
    return shown;
}

int TaskListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant TaskListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return {};
    const TaskRow row = line(index);
    if (!row.isTask()) return role == Qt::DisplayRole ? row.heading : QVariant();
    if (role == Qt::DisplayRole) return shownTitle(row.title);
    const TaskWords words(environment_.now(), environment_.calendar());
    QStringList parts{shownTitle(row.title)};
    if (row.isCompleted) parts += "completed";
    if (row.hasConflict) parts += "changed on two devices";
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
    if (!index.isValid() || !at(index.row()).isTask()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled
           | Qt::ItemNeverHasChildren;
}

std::vector<Uuid> TaskListModel::tasksOf(const QModelIndexList& indexes) const {
    std::vector<int> rows;
    for (const QModelIndex& index : indexes) {
        if (at(index.row()).isTask()) rows.push_back(index.row());
    }
    std::ranges::sort(rows);
    std::vector<Uuid> tasks;
    tasks.reserve(rows.size());
    for (const int row : rows)
        tasks.push_back(at(row).id);
    return tasks;
}

std::vector<Uuid> TaskListModel::orderWith(
    const std::vector<Uuid>& tasks, const std::optional<Uuid>& before) const {
    const QModelIndex first = tasks.empty() ? QModelIndex() : indexOf(tasks.front());
    if (!first.isValid()) return {};
    const TaskLine& pattern = at(first.row());
    std::vector<const TaskLine*> level;
    std::optional<std::size_t> gap;
    for (const TaskLine& line : lines_) {
        if (before && line.id == *before) gap = level.size();
        const bool isOfLevel = line.kind == pattern.kind
                               && (line.kind == Kind::task || line.place.id == pattern.place.id);
        if (isOfLevel) level.push_back(&line);
    }
    const std::size_t target = gap.value_or(level.size());
    const std::set<Uuid> dragged(tasks.begin(), tasks.end());
    const auto isDragged = [&](const TaskLine* line) { return dragged.contains(line->id); };
    std::size_t from = target;
    std::size_t to = target;
    std::vector<Uuid> moved;
    for (std::size_t i = 0; i < level.size(); ++i) {
        if (!isDragged(level[i])) continue;
        moved.push_back(level[i]->id);
        from = std::min(from, i);
        to = std::max(to, i + 1);
    }
    widen(level, from, to);
    std::vector<Uuid> order;
    for (std::size_t i = from; i <= to; ++i) {
        if (i == target) order.insert(order.end(), moved.begin(), moved.end());
        if (i < to && !isDragged(level[i])) order.push_back(level[i]->id);
    }
    return order;
}

/// Takes in the neighbours that share a place with those of the stretch, or would: they are told
/// apart when it is put in order.
void TaskListModel::widen(
    const std::vector<const TaskLine*>& level, std::size_t& from, std::size_t& to) {
    const auto place = [&](std::size_t i) { return level[i]->place.sortIndex.value_or(0); };
    while (from > 0 && place(from - 1) == place(from)) {
        --from;
    }
    std::int64_t last = place(from);
    for (std::size_t i = from + 1; i < level.size(); ++i) {
        if (i >= to && place(i) > last) break;
        last = std::max(place(i), placeAfter(last));
        to = std::max(to, i + 1);
    }
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
