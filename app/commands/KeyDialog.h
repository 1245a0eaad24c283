#pragma once

#include "app/commands/Commands.h"

#include <QDialog>

class QKeySequenceEdit;
class QLabel;

namespace tesserine::app {

/// Takes new keys for one command by having them pressed. What is taken is said at once and cannot
/// be chosen.
class KeyDialog final : public QDialog {
    Q_OBJECT

public:
    /// `id` names the command.
    KeyDialog(Commands& commands, std::string_view id, QWidget* parent);

private:
    void use(const QList<QKeySequence>& keys);

    Commands& commands_;
    const std::string_view id_;
    QKeySequenceEdit* const pressed_;
    QLabel* const refusal_;
};

}  // namespace tesserine::app
