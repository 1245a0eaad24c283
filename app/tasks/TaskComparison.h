#pragma once

#include "sync/TaskConflicts.h"

#include <QDialog>

class QGridLayout;

namespace tesserine::app {

class AppEnvironment;

/// The two versions of a task that devices changed at the same time, side by side, with what
/// differs marked. One of them is chosen, or nothing is decided yet.
class TaskComparison final : public QDialog {
    Q_OBJECT

public:
    /// Deletes itself when it is closed; shown with `open`.
    TaskComparison(AppEnvironment& environment, const TaskConflict& conflict, QWidget* parent);

private:
    void build(const TaskConflict& conflict);
    void addLine(QGridLayout& grid, const QString& name, const QString& own, const QString& other);
    void keepThis();
    void useOther();
    void save();

    AppEnvironment& environment_;
    const Uuid task_;
};

}  // namespace tesserine::app
