#pragma once

#include <QFrame>

namespace tesserine::app {

/// A frame over the window that asks one thing. An answer, Escape and a click outside close it; it
/// deletes itself then. It does not stand out of the screen.
class Popup : public QFrame {
    Q_OBJECT

protected:
    explicit Popup(QWidget* parent);

    /// Shows it at the place; `first` has the keys.
    void openAt(const QPoint& globalPlace, QWidget& first);
    /// Gives it the size that its content needs now.
    void fit();

private:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tesserine::app
