#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;

namespace tesserine::app {

class BodyEdit;

/// The line below a note: how many words it holds, or the selection, and whether it is saved.
class EditorFooter final : public QWidget {
    Q_OBJECT

public:
    EditorFooter(BodyEdit& body, QWidget* parent);

    void showState(const QString& state);
    void showWordCount(bool isShown);

private:
    void count();

    BodyEdit& body_;
    QLabel* const words_;
    QLabel* const state_;
    QTimer timer_;
};

}  // namespace tesserine::app
