#pragma once

#include "app/tasks/TaskRow.h"
#include "core/store/StoreChanges.h"
#include "core/tasks/TaskView.h"

#include <QAbstractListModel>

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

namespace tesserine::app {

class AppEnvironment;

/// The tasks of one view as lines: groups, tasks, and the subtasks of those that are expanded.
///
/// Reads a page at a time as the list is scrolled, so that a view of any length shows at once. When
/// the library changes, only the lines that changed do: selection and scroll position stay.
class TaskListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    /// Tasks read at once.
    static constexpr std::size_t pageSize = 100;

    explicit TaskListModel(AppEnvironment& environment, QObject* parent = nullptr);

    void setView(const TaskView& view);
    const TaskView& view() const { return view_; }

    const TaskRow& line(const QModelIndex& index) const { return line(index.row()); }
    const TaskRow& line(int row) const { return lines_[static_cast<std::size_t>(row)]; }
    /// The line of the task; invalid when it is not read (yet).
    QModelIndex indexOf(const Uuid& task) const;
    /// How many tasks the view holds, once all are read.
    std::optional<std::size_t> taskCount() const;

    void setExpanded(const Uuid& task, bool isExpanded);
    /// Keeps the line of a task that is about to leave the view, shown as completed, until
    /// `release`: while its tick is drawn.
    void hold(const Uuid& task) { held_.insert(task); }
    void release(const Uuid& task);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

    /// The tasks of the lines, without headings.
    std::vector<Uuid> tasksOf(const QModelIndexList& indexes) const;

    /// Reads again as many tasks as are shown.
    void reload();

signals:
    /// After `reload`, whether or not a line has changed.
    void reloaded();

private:
    /// What was read of the view.
    struct Page {
        std::vector<TaskRow> lines{};
        std::size_t taskCount = 0;  ///< without subtasks
        bool isEnd = false;         ///< there are no further tasks
    };
    Page read(std::size_t offset, std::size_t limit) const;
    /// The first tasks of a view without groups: with the lines that are shown, but for those of
    /// `changed` and of tasks with subtasks.
    Page readAgain(std::size_t limit, const std::set<Uuid>& changed) const;
    std::size_t countToRead() const;
    void follow(const std::vector<ObjectChange>& changes);
    void reloadChanged(const std::set<Uuid>& changed);
    void show(Page page);
    QString groupOf(const CDTask& task) const;
    void appendTask(std::vector<TaskRow>& lines, const CDTask& task, bool isBelowItsDay) const;
    void keepHeld(std::vector<TaskRow>& lines) const;

    void replaceLines(const std::vector<TaskRow>& lines);
    void removeMissing(const std::vector<TaskRow>& lines);
    void bringIntoOrder(const std::vector<TaskRow>& lines);
    void insertNew(const std::vector<TaskRow>& lines);
    void takeValues(const std::vector<TaskRow>& lines);

    AppEnvironment& environment_;
    TaskView view_ = TaskView::today();
    std::vector<TaskRow> lines_;
    std::size_t taskCount_ = 0;  // read, without subtasks
    bool isEnd_ = true;
    std::set<Uuid> expanded_;
    std::set<Uuid> held_;
};

/// What a drag of tasks carries: their ids, one to a line.
inline constexpr const char* tasksMimeType = "application/x-tesserine-tasks";
/// The caller's; other programs are given the titles.
QMimeData* mimeDataOf(const std::vector<Uuid>& tasks, const QStringList& titles);
std::vector<Uuid> draggedTasks(const QMimeData& data);

}  // namespace tesserine::app
