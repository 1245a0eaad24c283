#pragma once

#include <QObject>

class QApplication;

namespace tesserine::app {

/// Keeps the keys with the dialog that asks: a window it blocks gives them back when a desktop
/// hands them over, as some do on a click, and takes no shortcut meanwhile. As long as it lives,
/// for all windows of the application.
class ModalFocus final : public QObject {
    Q_OBJECT

public:
    explicit ModalFocus(QApplication& application);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tesserine::app
