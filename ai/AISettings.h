#pragma once

#include "base/Product.h"

#include <string>
#include <string_view>

namespace tesserine {

class Preferences;

/// What the user settled about the assistant; off until they turn it on.
struct AISettings {
    enum class Backend {
        relay,   ///< the service forwards questions to the provider
        ownKey,  ///< questions go straight to the provider with the user's key
    };

    static constexpr std::string_view preferencesKey = "app.tesserine.ai.settings";
    /// What stood there and was no JSON, once it was replaced.
    static constexpr std::string_view unreadableKey = "app.tesserine.ai.settings.unreadable";

    bool isEnabled = false;
    Backend backend = Backend::relay;
    std::string model = "grok-4.6";
    bool allowWebSearch = false;
    bool hasSeenDataNotice = false;
    std::string relayBaseURL = std::string(product::serviceBaseURL) + "/api/v1";

    /// From JSON text. What is absent, of another type or an unknown word takes its default, so
    /// that a newer version's settings do not turn the assistant off; text that is not JSON takes
    /// all defaults.
    static AISettings parse(std::string_view json);
    std::string json() const;

    static AISettings load(const Preferences& preferences);
    /// Throws `FileError`.
    void save(Preferences& preferences) const;

    friend bool operator==(const AISettings&, const AISettings&) = default;
};

/// As the settings show it: "Tesserine AI".
std::string_view displayName(AISettings::Backend backend);
/// Where questions go, in a sentence or two.
std::string_view explanation(AISettings::Backend backend);

}  // namespace tesserine
