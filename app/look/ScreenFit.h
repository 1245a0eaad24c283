#pragma once

#include <QObject>

class QApplication;

namespace tesserine::app {

/// Sees to it that no window opens larger than its screen, such as a small one whose pictures are
/// enlarged. As long as it lives, for all windows and dialogs of the application.
class ScreenFit final : public QObject {
    Q_OBJECT

public:
    explicit ScreenFit(QApplication& application);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tesserine::app
