#pragma once

#include "base/Preferences.h"
#include "base/UserError.h"
#include "sync/AccountSession.h"
#include "sync/LiveUpdates.h"
#include "sync/SyncClient.h"

#include <memory>
#include <optional>
#include <string>

namespace tesserine {

/// There is no service to sync with, or none that may be trusted with a token.
class SyncSetupError final : public UserError {
public:
    static SyncSetupError notSetUp() {
        return SyncSetupError(
            "Sync is not set up: this build has no service of its own. Name one with “tesserine "
            "account service https://…”.");
    }
    static SyncSetupError badAddress() {
        return SyncSetupError(
            "The address of a service begins with “https://”; “http://” is for this computer "
            "only.");
    }

private:
    using UserError::UserError;
};

/// The service as this machine is set up for: its client and its account, put together.
class SyncService {
public:
    /// The preference that names a service of the user's own.
    static constexpr const char* addressKey = "tesserine.serviceURL";

    /// What the service stands on; all of it outlives the service.
    struct Environment {
        HTTPTransport& session;
        SecretStore& secrets;
        const Clock& clock;
        Random& random;
        Log log{};
        WebSocketListening socket = listenToWebSocket;  ///< for the live channel
    };

    SyncService(const std::string& address, const Environment& environment);

    SyncClient& client() { return client_; }
    AccountSession& account() { return account_; }
    /// Opens the live channel; somebody is signed in. It ends before the service does.
    std::unique_ptr<LiveUpdates> listen(LiveUpdates::Listener listener);

    /// The address in use: `variable` (of the environment), else the preference, else the build's
    /// own. Throws `SyncSetupError`. Touches no network.
    static std::string address(
        const Preferences& preferences, const std::optional<std::string>& variable);
    /// `address` when it may be trusted with a token. Throws `SyncSetupError::badAddress`.
    static std::string checked(const std::string& address);
    /// Under which name the tokens for `address` are kept, so that no other service ever gets them.
    static std::string secretService(const std::string& address);

private:
    const Environment environment_;
    SyncClient client_;
    AccountSession account_;
};

}  // namespace tesserine
