#pragma once

#include <QTextCursor>
#include <QTimer>
#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;

namespace tesserine::app {

class BodyEdit;
class Commands;

/// Finds words in the open note, and replaces them. Case does not matter. What it marks and counts
/// follows the note when that is changed.
class FindBar final : public QWidget {
    Q_OBJECT

public:
    /// More places than these are found one after the other, but not counted and marked.
    static constexpr std::size_t mostMarked = 1'000;

    FindBar(Commands& commands, BodyEdit& body, QWidget* parent);

    enum class Purpose { find, replace };
    void open(Purpose purpose);

private:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void search();
    void markAll();
    void forgetMarks();
    void go(QTextDocument::FindFlags flags);
    void replaceOne();
    void replaceAll();
    void showCount();

    BodyEdit& body_;
    QLineEdit* const sought_;
    QLineEdit* const replacement_;
    QWidget* const replacing_;
    QLabel* const count_;
    std::vector<QTextCursor> found_;
    QTimer timer_;  // until the note was left unchanged for a moment
};

}  // namespace tesserine::app
