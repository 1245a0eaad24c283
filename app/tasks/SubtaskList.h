#pragma once

#include "base/Uuid.h"
#include "core/model/TaskEntities.h"

#include <QWidget>

#include <optional>
#include <vector>

class QLineEdit;
class QVBoxLayout;

namespace tesserine::app {

class AppEnvironment;

/// The subtasks of a task: ticked, renamed, deleted, added.
class SubtaskList final : public QWidget {
    Q_OBJECT

public:
    explicit SubtaskList(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Shows those of the task, which is no subtask. Lines of subtasks that stay are kept, with
    /// what is being typed into them.
    void showSubtasks(const CDTask& task);
    /// Takes over what was typed without a Return; false when it could not be saved.
    bool flush();

private:
    class Line;

    void rebuild(const std::vector<CDTask*>& subtasks);
    bool add();
    void tick(const Uuid& subtask);
    void rename(const Uuid& subtask, const QString& title);
    void remove(const Uuid& subtask);

    AppEnvironment& environment_;
    std::optional<Uuid> task_;
    QVBoxLayout* const lines_;
    std::vector<Line*> shown_;
    QLineEdit* const field_;
};

}  // namespace tesserine::app
