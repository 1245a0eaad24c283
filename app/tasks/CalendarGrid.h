#pragma once

#include "app/tasks/CalendarModel.h"

#include <QWidget>

#include <optional>

namespace tesserine::app {

/// The days of a calendar with their tasks. A click on a day begins a task there, one on a task
/// shows it; tasks are dragged to other days.
///
/// Arrows move between days, Page Up and Page Down between months or weeks, Home goes to today;
/// Ctrl with Up and Down chooses a task of the day, Return opens it or begins a new one.
class CalendarGrid final : public QWidget {
    Q_OBJECT

public:
    CalendarGrid(AppEnvironment& environment, CalendarModel& model, QWidget* parent = nullptr);

    /// Shows what the model holds now.
    void refresh();
    /// The task that is chosen on the marked day.
    std::optional<Uuid> chosenTask() const { return task_; }
    /// Makes the task the chosen one, where it is shown.
    void choose(const std::optional<Uuid>& task);

    /// Where a task is painted, for tests; empty where it is not.
    QRect areaOf(const Uuid& task) const;
    QRect areaOfDay(std::size_t day) const;
    /// The line that says how many more tasks the day has; empty where all are shown.
    QRect areaOfMore(std::size_t day) const;

signals:
    void dayChanged();
    void chosen(const std::optional<tesserine::Uuid>& task);
    void opened(const tesserine::Uuid& task);
    /// A task is to be made on the day.
    void addingAsked(tesserine::Instant day);
    void movedToDay(const std::vector<tesserine::Uuid>& tasks, tesserine::Instant day);

private:
    QSize sizeHint() const override { return {640, 480}; }
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    std::size_t shownTaskCount(std::size_t day) const;
    QRect areaOfLine(std::size_t day, std::size_t line) const;
    std::optional<std::size_t> dayAt(const QPoint& place) const;
    const CalendarTask* taskAt(const QPoint& place) const;

    bool isOnMarkedDay(const Uuid& task) const;
    void markDay(Instant day);
    void choosePressed();
    void chooseNeighbour(int steps);
    void showAll(std::size_t day, const QPoint& globalPlace);
    void drag(const CalendarTask& task);
    void paintWeekdays(QPainter& painter) const;
    void paintDay(QPainter& painter, std::size_t day) const;
    void paintTask(QPainter& painter, const QRect& area, const CalendarTask& task) const;

    AppEnvironment& environment_;
    CalendarModel& model_;
    std::optional<Uuid> task_;
    std::optional<std::size_t> dropDay_;
    QPoint pressedAt_;
    Instant pressedDay_;
    std::optional<CalendarTask> pressed_;  // by the last press, wherever it stands by now
    bool isPressed_ = false;
};

}  // namespace tesserine::app
