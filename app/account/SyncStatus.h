#pragma once

#include "app/account/SyncWords.h"

#include <QAbstractButton>
#include <QTimer>

namespace tesserine::app {

class AppEnvironment;

/// One line below the sidebar that tells how sync is doing: quiet while all is well, absent while
/// sync is not set up. A press asks for the sync settings.
class SyncStatus final : public QAbstractButton {
    Q_OBJECT

public:
    explicit SyncStatus(AppEnvironment& environment, QWidget* parent = nullptr);

    QSize sizeHint() const override;

signals:
    void settingsWanted();

private:
    void follow();
    void showWords();
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    AppEnvironment& environment_;
    Ink ink_ = Ink::secondary;
    QTimer patience_;  // a sync that ends at once is not worth a flicker
};

}  // namespace tesserine::app
