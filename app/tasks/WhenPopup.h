#pragma once

#include "app/tasks/Popup.h"
#include "core/tasks/TaskService.h"

#include <optional>
#include <vector>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tesserine {
class Calendar;
}

namespace tesserine::app {

class AppEnvironment;
class MonthPicker;

/// Asks when: usual answers, a field for words such as "friday 3pm", a month.
class WhenPopup final : public Popup {
    Q_OBJECT

public:
    /// An answer that is often given; without `when`, "never".
    struct Answer {
        QString title;
        std::optional<TaskDue> when;
    };

    WhenPopup(AppEnvironment& environment, const std::vector<Answer>& answers, QWidget* parent);

    /// For the due date of tasks: today, tomorrow, next week, no date.
    static WhenPopup* forDue(AppEnvironment& environment, QWidget* parent);
    /// For a reminder: before `due` where there is one, this evening, tomorrow morning, none.
    static WhenPopup* forReminder(
        AppEnvironment& environment, const std::optional<TaskDue>& due, QWidget* parent);

    /// Opens it below the place, the day of `present` marked.
    void open(const QPoint& globalPlace, const std::optional<Instant>& present);

signals:
    /// Without a time of day unless one was given.
    void picked(const std::optional<tesserine::TaskDue>& when);

private:
    void read();
    void take();
    void pick(const std::optional<TaskDue>& when);

    AppEnvironment& environment_;
    QLineEdit* const words_;
    QLabel* const meaning_;
    MonthPicker* const month_;
    std::optional<TaskDue> read_;
};

/// When a reminder for `when` comes: at its time, or in the morning of its day.
Instant reminderTime(const TaskDue& when, const Calendar& calendar);

}  // namespace tesserine::app
