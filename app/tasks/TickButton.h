#pragma once

#include "core/model/TaskEntities.h"

#include <QAbstractButton>

namespace tesserine::app {

/// The circle of a task as a button.
class TickButton final : public QAbstractButton {
    Q_OBJECT

public:
    explicit TickButton(QWidget* parent = nullptr);

    void setTask(const QString& title, TaskPriority priority, bool isCompleted);

private:
    QSize sizeHint() const override;
    void paintEvent(QPaintEvent* event) override;

    TaskPriority priority_ = TaskPriority::p4;
    bool isCompleted_ = false;
};

}  // namespace tesserine::app
