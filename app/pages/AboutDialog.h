#pragma once

#include <QDialog>

namespace tesserine::app {

/// What the program is, its version, and its licence.
class AboutDialog final : public QDialog {
    Q_OBJECT

public:
    explicit AboutDialog(QWidget* parent = nullptr);
};

}  // namespace tesserine::app
