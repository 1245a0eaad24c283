#include "app/assistant/AssistantSettings.h"

#include "app/assistant/AssistantForm.h"

namespace tesserine::app {

QWidget* makeAssistantSettings(AppEnvironment& environment, QWidget* parent) {
    return new AssistantForm(environment, parent);
}

}  // namespace tesserine::app
