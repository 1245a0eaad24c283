#pragma once

#include "app/look/Icon.h"

#include <QWidget>

namespace tesserine::app {

/// A picture of the icon set that stands still; decoration, which screen readers pass over.
class IconLabel final : public QWidget {
    Q_OBJECT

public:
    /// `side` in device-independent pixels.
    IconLabel(QIcon icon, int side, QWidget* parent = nullptr);

    void setIcon(const QIcon& icon);

private:
    void paintEvent(QPaintEvent* event) override;

    QIcon icon_;
};

}  // namespace tesserine::app
