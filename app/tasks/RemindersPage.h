#pragma once

#include "base/Uuid.h"

#include <QWidget>

#include <optional>

class QListView;
class QStackedWidget;

namespace tesserine {
struct TaskDue;
}

namespace tesserine::app {

class AppEnvironment;
class RemindersModel;
struct ReminderRow;

/// What one will be reminded of, notes and tasks together, and what one was reminded of and has not
/// put away: opened, put off or removed.
class RemindersPage final : public QWidget {
    Q_OBJECT

public:
    explicit RemindersPage(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Reads the reminders; called when the page comes into sight.
    void open();

signals:
    /// Another row was chosen: that of the task, or of a note.
    void chosen(const std::optional<tesserine::Uuid>& task);
    /// The task or note was asked for.
    void taskChosen(const tesserine::Uuid& task);
    void noteChosen(const tesserine::Uuid& note);

private:
    std::optional<ReminderRow> current() const;
    int rowOf(const ReminderRow& chosen) const;
    void openRow(const ReminderRow& row);
    void putOff(const ReminderRow& row);
    void setReminder(const ReminderRow& row, const std::optional<TaskDue>& when);
    void showMenu(const QPoint& place);
    void reload();
    bool eventFilter(QObject* watched, QEvent* event) override;

    AppEnvironment& environment_;
    RemindersModel* const model_;
    QListView* const list_;
    QStackedWidget* const stack_;
    bool isReloading_ = false;
};

}  // namespace tesserine::app
