#pragma once

#include "app/tasks/Popup.h"
#include "base/Calendar.h"
#include "core/tasks/RecurrenceRule.h"

#include <optional>
#include <vector>

class QComboBox;
class QLabel;
class QSpinBox;
class QToolButton;

namespace tesserine::app {

/// A pop-up that asks how a task repeats: usual rules, or a number of days, weeks on certain
/// weekdays, months or years.
class RecurrencePopup final : public Popup {
    Q_OBJECT

public:
    /// `due` is the due date of the task, from which a rule takes its day; none: `today`.
    RecurrencePopup(Calendar calendar, std::optional<Instant> due, Instant today, QWidget* parent);

    void open(const QPoint& globalPlace, const std::optional<RecurrenceRule>& present);

signals:
    void picked(const std::optional<tesserine::RecurrenceRule>& rule);

private:
    RecurrenceRule rule() const;
    void addUsual(const QString& title, const std::optional<RecurrenceRule>& rule);
    void pick(const std::optional<RecurrenceRule>& rule);
    void updateMeaning();

    Calendar calendar_;
    std::optional<Instant> due_;
    Instant today_;
    QSpinBox* const interval_;
    QComboBox* const unit_;
    QWidget* const weekdayRow_;
    std::vector<QToolButton*> weekdays_;  // in the order of the user's week
    QLabel* const meaning_;
};

}  // namespace tesserine::app
