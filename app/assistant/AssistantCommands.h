#pragma once

#include "base/Uuid.h"

#include <functional>
#include <optional>

class QWidget;

namespace tesserine::app {

class AppEnvironment;
class AskPanel;
class Commands;

/// What the commands of the assistant need of the window.
struct AssistantPlace {
    QWidget* window = nullptr;
    AskPanel* panel = nullptr;
    /// Saves what was typed; false when that failed, and the user was told.
    std::function<bool()> save;
    /// The note that is looked at, if any.
    std::function<std::optional<Uuid>()> note;
};

/// Handles the commands "assistant.…".
void handleAssistantCommands(
    AppEnvironment& environment, Commands& commands, const AssistantPlace& place);

}  // namespace tesserine::app
