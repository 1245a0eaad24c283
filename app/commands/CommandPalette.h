#pragma once

#include "app/commands/Commands.h"
#include "app/commands/QuickPicker.h"

namespace tesserine::app {

/// Every command that can be done now, found by a few letters of its title, with its keys.
class CommandPalette final : public QuickPicker {
    Q_OBJECT

public:
    /// For the window whose commands these are. `open` shows it.
    CommandPalette(Commands& commands, QWidget* window);

private:
    void show(const QString& typed);

    Commands& commands_;
    std::vector<const Command*> shown_;
};

}  // namespace tesserine::app
