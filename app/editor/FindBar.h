#pragma once

#include "app/editor/PassageMarks.h"

#include <QTextCursor>
#include <QTimer>
#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;

namespace tesserine::app {

class Commands;

/// Finds words in the open note, and replaces them. Case does not matter. What it marks and counts
/// follows the note when that is changed. Words in a table are found, but not replaced.
class FindBar final : public QWidget {
    Q_OBJECT

public:
    FindBar(Commands& commands, BodyEdit& body, QWidget* parent);

    enum class Purpose { find, replace };
    void open(Purpose purpose);

private:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void layOut();
    void search();
    void markAll();
    enum class Direction { forward, backward };
    void go(Direction direction);
    void replaceOne();
    void replaceAll();
    void showCount();

    BodyEdit& body_;
    QLineEdit* const sought_;
    QLineEdit* const replacement_;
    QWidget* const replacing_;
    QLabel* const count_;
    QTextCursor before_;  // where one was before one looked
    PassageMarks marks_;
    std::vector<PassageRange> found_;
    QTimer timer_;  // until the note was left unchanged for a moment
};

}  // namespace tesserine::app
