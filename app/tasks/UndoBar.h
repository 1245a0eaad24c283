#pragma once

#include <QFrame>

class QLabel;
class QTimer;

namespace tesserine::app {

/// A line at the foot of a list that says what was done and offers to undo it, for a while.
class UndoBar final : public QFrame {
    Q_OBJECT

public:
    explicit UndoBar(QWidget* parent = nullptr);

    /// Shows the sentence in place of the one before, which cannot be undone any more.
    void offer(const QString& sentence);

signals:
    void undone();

private:
    void undo();
    void paintEvent(QPaintEvent* event) override;

    QLabel* const sentence_;
    QTimer* const timer_;
};

}  // namespace tesserine::app
