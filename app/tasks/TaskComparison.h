#pragma once

#include "sync/TaskConflicts.h"

#include <QDialog>

#include <functional>

class QGridLayout;
class QPushButton;

namespace tesserine::app {

class AppEnvironment;

/// The two versions of a task that devices changed at the same time, side by side, with what
/// differs marked. One of them is chosen, or both; Return closes it, and nothing is decided yet.
class TaskComparison final : public QDialog {
    Q_OBJECT

public:
    /// Deletes itself when it is closed; shown with `open`.
    TaskComparison(AppEnvironment& environment, TaskConflict conflict, QWidget* parent);

private:
    void build();
    static void addLine(
        QGridLayout& grid, const QString& name, const QString& other, const QString& own);
    bool isAsShown(TaskConflicts& conflicts) const;
    using Choice = std::function<void(TaskConflicts& conflicts)>;
    QPushButton* makeButton(const QString& title, const char* name, Choice choice);

    AppEnvironment& environment_;
    const TaskConflict conflict_;  // as it is shown
};

}  // namespace tesserine::app
