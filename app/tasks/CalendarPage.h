#pragma once

#include "app/tasks/CalendarModel.h"

#include <QWidget>

#include <optional>

class QLabel;

namespace tesserine::app {

class AppEnvironment;
class CalendarGrid;
class QuickAddBar;
class TaskActions;

/// The calendar of tasks: a month or a week, with the quick-add bar for the marked day.
class CalendarPage final : public QWidget {
    Q_OBJECT

public:
    CalendarPage(AppEnvironment& environment, TaskActions& actions, QWidget* parent = nullptr);

    /// Reads the tasks; called when the page comes into sight.
    void open();
    CalendarGrid& grid() const { return *grid_; }
    QuickAddBar& quickAdd() const { return *bar_; }
    /// The chosen task, or nothing.
    std::vector<Uuid> selectedTasks() const;
    /// Below the chosen task, for a pop-up about it.
    QPoint placeOfCurrent() const;

signals:
    void chosen(const std::optional<tesserine::Uuid>& task);
    void opened(const tesserine::Uuid& task);

private:
    void setSpan(CalendarModel::Span span);
    void refresh();
    void showDay();
    void showTitle();
    void resizeEvent(QResizeEvent* event) override;
    QLayout* makeHead();

    AppEnvironment& environment_;
    TaskActions& actions_;
    CalendarModel model_;
    QLabel* const title_;
    QuickAddBar* const bar_;
    CalendarGrid* const grid_;
};

}  // namespace tesserine::app
