#pragma once

#include <QFrame>

class QLabel;
class QShortcut;
class QTimer;

namespace tesserine::app {

/// A line at the foot of a list that says what was done and offers to undo it, for a while; the key
/// for that acts everywhere in the widget that holds it, but in fields with words to undo.
class UndoBar final : public QFrame {
    Q_OBJECT

public:
    explicit UndoBar(QWidget* parent);

    /// Shows the sentence in place of the one before, which cannot be undone any more.
    void offer(const QString& sentence);

signals:
    void undone();

private:
    void undo();
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    QLabel* const sentence_;
    QTimer* const timer_;
    QShortcut* const key_;
};

}  // namespace tesserine::app
