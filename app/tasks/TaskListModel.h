#pragma once

#include "app/state/InTurn.h"
#include "app/tasks/TaskListing.h"
#include "app/tasks/TaskRow.h"
#include "core/store/StoreChanges.h"

#include <QAbstractListModel>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace tesserine::app {

class AppEnvironment;

/// One line of a list: the heading of a group, a task, or a subtask below it.
struct TaskLine {
    enum class Kind { heading, task, subtask };
    Kind kind = Kind::task;
    Uuid id{};          ///< of the task or subtask
    TaskEntry place{};  ///< the task's; of a subtask its task's; of a heading one of its group
    bool isTall = false;

    bool isTask() const { return kind != Kind::heading; }
    friend bool operator==(const TaskLine&, const TaskLine&) = default;
};

/// The tasks of one view as lines, any number of them: groups, tasks, and the subtasks of those
/// that are expanded.
///
/// The beginning is there at once; the rest, without what the lines show, is read in the
/// background. What a line shows is read when it comes into view. Changes of the library move,
/// insert and remove single lines, so that selection and scroll position stay; a change of very
/// many tasks at once reads the list anew in the background.
class TaskListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    /// Tasks that are there at once.
    static constexpr std::size_t beginning = 100;
    /// Beyond so many changed tasks the list is read anew.
    static constexpr std::size_t mostSingleChanges = 100;

    explicit TaskListModel(AppEnvironment& environment, QObject* parent = nullptr);

    void setView(const TaskView& view);
    const TaskView& view() const { return listing_.view(); }

    const TaskLine& at(int row) const { return lines_[static_cast<std::size_t>(row)]; }
    /// What the line shows; reads it if need be.
    TaskRow line(int row) const;
    TaskRow line(const QModelIndex& index) const { return line(index.row()); }
    /// The line of the task; invalid when it is not listed (yet).
    QModelIndex indexOf(const Uuid& task) const;
    /// Whether the task is one of the view, listed already or not.
    bool belongs(const Uuid& task) const { return present(task).has_value(); }
    /// How many tasks the view holds, once all are listed.
    std::optional<std::size_t> taskCount() const;

    void setExpanded(const Uuid& task, bool isExpanded);
    /// Keeps the line of a task that is about to leave its place, shown as completed, until
    /// `release`: while its tick is drawn.
    void hold(const Uuid& task);
    void release(const Uuid& task);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    /// The tasks of the lines, without headings.
    std::vector<Uuid> tasksOf(const QModelIndexList& indexes) const;
    /// The new order of a stretch of tasks, or subtasks of one task, when those of `tasks` that
    /// are of the level of the first are put before the line `before`; none: behind the last one.
    /// Those that keep their places are left out.
    std::vector<Uuid> orderWith(
        const std::vector<Uuid>& tasks, const std::optional<Uuid>& before) const;

signals:
    /// Around a reset that leaves the view what it is.
    void aboutToBeReadAnew();
    void readAnew();
    /// The lines are those of the library again, after a change of it or of the view.
    void settled();

private:
    void show(const TaskView& view);
    using Lines = std::vector<TaskLine>;

    // All of the list
    void readRest();
    void take(std::vector<TaskEntry> entries);
    Lines linesOf(std::vector<TaskEntry> entries) const;
    Lines block(const TaskEntry& entry) const;
    static TaskLine heading(const TaskEntry& entry);

    // Single changes
    void follow(const std::vector<ObjectChange>& changes);
    void takeChanges(const std::vector<ObjectChange>& changes);
    std::set<Uuid> concerned(const std::set<Uuid>& tasks) const;
    void update(const Uuid& task);
    void insert(const TaskEntry& entry);
    void remove(int row);
    void move(int row, const TaskEntry& entry);
    void refreshBlock(int row);
    void removeLonelyHeading(int row);
    int placeOf(const TaskEntry& entry, int first, int last) const;
    bool isBefore(const TaskLine& line, const TaskEntry& entry) const;
    bool needsHeading(int above, const TaskEntry& entry) const;
    int endOfBlock(int row) const;
    int rowOfTask(const Uuid& task) const;
    std::optional<TaskEntry> present(const Uuid& task) const;

    void insertLines(int row, const Lines& lines);
    void removeLines(int row, int end);
    void moveLines(int row, int end, int to);
    static void widen(
        const std::vector<const TaskLine*>& level, std::size_t& from, std::size_t& to);

    AppEnvironment& environment_;
    mutable TaskRows rows_;
    TaskListing listing_;
    Lines lines_;
    InTurn inTurn_;
    bool isComplete_ = true;
    bool isReading_ = false;
    std::uint64_t reading_ = 0;  // counts readings; an answer to an earlier one is dropped
    std::set<Uuid> expanded_;
    std::map<Uuid, TaskEntry> held_;
};

/// What a drag of tasks carries: their ids, one to a line.
inline constexpr const char* tasksMimeType = "application/x-tesserine-tasks";
/// The caller's; other programs are given the titles.
QMimeData* mimeDataOf(const std::vector<Uuid>& tasks, const QStringList& titles);
std::vector<Uuid> draggedTasks(const QMimeData& data);

}  // namespace tesserine::app
