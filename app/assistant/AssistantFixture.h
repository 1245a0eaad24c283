#pragma once

#include "ai/AICredentialStore.h"
#include "ai/AISettings.h"
#include "app/state/WindowFixture.h"
#include "tests/support/ScriptedNetwork.h"

namespace tesserine::test {

/// A window whose network is a script, with the assistant set up for the user's own key.
class AssistantFixture : public WindowFixture {
public:
    AssistantFixture() {
        app::AppSetting given = setting();
        given.network = &network;
        open(given);
        AICredentialStore(secrets, {}).save("secret key");
        keep(
            {.isEnabled = true, .backend = AISettings::Backend::ownKey, .hasSeenDataNotice = true});
    }
    void keep(const AISettings& settings) { settings.save(environment->preferences()); }
    AISettings kept() { return AISettings::load(environment->preferences()); }

    ScriptedNetwork network;
};

}  // namespace tesserine::test
