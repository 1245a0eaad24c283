#pragma once

#include "app/tasks/TaskDelegate.h"
#include "base/Uuid.h"

#include <QListView>

#include <map>
#include <optional>
#include <vector>

class QVariantAnimation;

namespace tesserine::app {

class AppEnvironment;
class TaskListModel;

/// The list of tasks: ticked by their circles, expanded, dragged to another place, day or project.
class TaskListView final : public QListView {
    Q_OBJECT

public:
    TaskListView(AppEnvironment& environment, TaskListModel& model, QWidget* parent = nullptr);

    std::vector<Uuid> selectedTasks() const;
    /// Makes the task the only one selected, and scrolls to it; one that is not listed yet, once it
    /// is.
    void selectTask(const Uuid& task);
    /// Whether the task is one of the view's.
    bool lists(const Uuid& task) const;
    /// Draws the ticks of tasks that are about to be completed; their lines stay until then.
    void drawTicks(const std::vector<Uuid>& tasks);

signals:
    /// The circle of the task was clicked.
    void ticked(const tesserine::Uuid& task);
    void opened(const tesserine::Uuid& task);
    /// Another task is selected; none when several are, or none is.
    void chosen(const std::optional<tesserine::Uuid>& task);
    /// Tasks were dropped before another of the same level; none: behind the last one.
    void placed(
        const std::vector<tesserine::Uuid>& tasks, const std::optional<tesserine::Uuid>& before);
    /// Tasks were dropped into a group of another day.
    void movedToDay(const std::vector<tesserine::Uuid>& tasks, tesserine::Instant day);

private:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void selectionChanged(
        const QItemSelection& selected, const QItemSelection& deselected) override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyboardSearch(const QString& text) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;
    void paintEvent(QPaintEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    TaskDelegate::Part partAt(const QPoint& place) const;
    /// The row before which a drop at `place` belongs.
    int dropRow(const QPoint& place) const;
    bool acceptsDrops() const;
    bool isManual() const;
    std::optional<Instant> dayAt(int row) const;
    bool setExpanded(bool isExpanded);
    bool selectCurrent();
    QModelIndex taskBeside(int first, int last) const;
    void selectNext();
    void selectAwaited();
    void rememberSelection();
    void putSelectionBack();

    AppEnvironment& environment_;
    TaskListModel& model_;
    TaskDelegate* const delegate_;
    std::map<Uuid, QVariantAnimation*> ticks_;
    std::optional<int> dropRow_;
    bool selectsNext_ = false;     // when the lines that are selected go
    QPersistentModelIndex next_;   // to be the current line then
    std::optional<Uuid> awaited_;  // to be selected once it is listed
    // While the list is read anew.
    std::vector<Uuid> remembered_;
    std::optional<Uuid> rememberedTop_;
};

/// Whether movements are to be left out, as the user or the desktop wishes.
bool isMotionReduced(AppEnvironment& environment);

}  // namespace tesserine::app
