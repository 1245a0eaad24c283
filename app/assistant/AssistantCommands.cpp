#include "app/assistant/AssistantCommands.h"

#include "app/assistant/ActionReview.h"
#include "app/assistant/ActionWords.h"
#include "app/assistant/AskPanel.h"
#include "app/commands/Commands.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"

namespace tesserine::app {

void handleAssistantCommands(
    AppEnvironment& environment, Commands& commands, const AssistantPlace& place) {
    commands.on("assistant.ask", place.panel, [panel = place.panel] { panel->begin(); });
    for (const ActionWords& words : actionWords()) {
        commands.on(words.command, place.window, [&environment, place, action = words.action] {
            if (!place.save()) return;
            const auto note = place.note();
            if (!note) return showNotice(place.window, "Open a note first.");
            (new ActionReview(environment, *note, action, place.window))->begin();
        });
    }
}

}  // namespace tesserine::app
