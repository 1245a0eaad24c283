#pragma once

#include <QAbstractButton>

namespace tesserine::app {

/// A large button that says what it will do and what that means: one of a few ways to go on.
class ChoiceCard final : public QAbstractButton {
    Q_OBJECT

public:
    /// `icon` is of the icon set.
    ChoiceCard(
        const QString& icon, const QString& title, const QString& text, QWidget* parent = nullptr);

private:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tesserine::app
