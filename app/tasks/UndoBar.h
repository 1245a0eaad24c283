#pragma once

#include <QFrame>
#include <QKeySequence>
#include <QPointer>

class QLabel;
class QPushButton;
class QShortcut;
class QTimer;

namespace tesserine::app {

/// Whether a field has words of its own that the key, `Undo` or `Redo`, turns; a sentence that
/// waits for Enter has in any case.
bool turnsItself(const QWidget& field, QKeySequence::StandardKey key);

/// A line at the foot of a list that says what was done, and may offer to undo it, for a while and
/// as long as the mouse is over the list.
class UndoBar final : public QFrame {
    Q_OBJECT

public:
    /// The key that undoes acts in `keyScope` and what it holds, but in fields with words of their
    /// own to undo; also while the bar is not shown.
    UndoBar(QWidget* parent, QWidget& keyScope);

    /// Shows the sentence in place of the one before; an empty one hides that.
    void offer(const QString& sentence);
    /// Shows the sentence only, without a button.
    void tell(const QString& sentence);

signals:
    void undone();

private:
    void present(const QString& sentence, bool canUndo);
    void go();
    void undo();
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    QLabel* const sentence_;
    QPushButton* const undo_;
    QTimer* const timer_;
    const QPointer<QShortcut> key_;  // belongs to the scope
};

}  // namespace tesserine::app
