#pragma once

#include "core/model/TaskEntities.h"

#include <QWidget>

class QButtonGroup;

namespace tesserine::app {

/// Four flags of which one is chosen.
class PriorityButtons final : public QWidget {
    Q_OBJECT

public:
    explicit PriorityButtons(QWidget* parent = nullptr);

    void setPriority(TaskPriority priority);
    TaskPriority priority() const;

signals:
    /// By a person.
    void chosen(tesserine::TaskPriority priority);

private:
    void changeEvent(QEvent* event) override;
    void paintFlags();

    QButtonGroup* const buttons_;
};

}  // namespace tesserine::app
