#pragma once

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace tesserine {

class SyncService;
struct AISettings;

/// A signed-in account of a service that carries questions to the model.
struct RelayAccount {
    std::string apiURL;  ///< of the service, such as "https://notes.example.org/api/"
    /// An access token. Throws `AIError`, and `SyncError` for what is the service's own affair.
    std::function<std::string(const std::stop_token&)> token;
    /// Told when the service refused the token, so that the next request gets another one.
    std::function<void()> refused = [] {};

    /// None when nobody is signed in. Asks the keyring. Throws `SyncError`. The service outlives
    /// the result.
    static std::optional<RelayAccount> of(SyncService& service);

    /// Where the relay is: what the settings say, or that of the service while they say nothing of
    /// their own. None when the settings lead away from the service, which alone may see the token.
    std::optional<std::string> relayBaseURL(const AISettings& settings) const;
};

}  // namespace tesserine
