#pragma once

#include <QWidget>

namespace tesserine::app {

/// A thin line between rows or panes, across the whole width or height.
class Separator final : public QWidget {
    Q_OBJECT

public:
    explicit Separator(Qt::Orientation orientation, QWidget* parent = nullptr);

private:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tesserine::app
