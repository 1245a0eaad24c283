#pragma once

#include "ai/AISettings.h"

#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

class Preferences;

/// Which server is asked with the user's own key: the built-in provider, or one of the user's own
/// that speaks the same two forms of reply.
struct ProviderAddress {
    static constexpr std::string_view preferencesKey = "tesserine.assistant.providerURL";

    std::string baseURL;
    /// Of a server of the user's own; empty for the built-in provider.
    std::string host;

    bool isBuiltIn() const { return host.empty(); }

    static ProviderAddress builtIn();
    /// An address on this computer or in a private network, given by number or as "localhost": a
    /// name may lead anywhere tomorrow. None for any other.
    static std::optional<ProviderAddress> own(std::string_view address);
    /// What the user confirmed, else the built-in provider.
    static ProviderAddress load(const Preferences& preferences);
    /// Throws `FileError`.
    void save(Preferences& preferences) const;
};

/// Where questions go and who keeps the key, in a sentence or two.
std::string explanation(AISettings::Backend backend, const ProviderAddress& address);

}  // namespace tesserine
