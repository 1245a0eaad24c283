#pragma once

#include "ai/AIMessage.h"
#include "ai/AIProvider.h"
#include "ai/AISettings.h"
#include "ai/ProviderAddress.h"
#include "ai/ProviderChoice.h"
#include "ai/SentLog.h"

#include <memory>
#include <string>
#include <vector>

namespace tesserine {
class AICredentialStore;
class SyncService;
}  // namespace tesserine

namespace tesserine::cli {

class Session;

/// The assistant as the user set it up, in the terminal.
class Assistant {
public:
    explicit Assistant(Session& session);
    ~Assistant();

    const AISettings& settings() const { return settings_; }
    const ProviderAddress& address() const { return address_; }
    SentLog sentLog() const;
    /// Of the server that is asked. Reaching it may throw `KeychainError`.
    AICredentialStore credentials() const;

    /// The provider that requests go through. Throws `AIError`, and `CommandError` when the keyring
    /// cannot be reached or the user was never shown what is sent where.
    std::unique_ptr<AIProvider> provider() const;

    /// Notes what is sent, sends it once and waits. Throws `AIError`.
    AIResponse send(
        const AIRequest& request,
        const std::string& purpose,
        const std::vector<std::string>& titles) const;

private:
    std::optional<RelayAccount> account() const;

    Session& session_;
    AISettings settings_;
    ProviderAddress address_;
    mutable std::unique_ptr<SyncService> service_;  // whose token the provider asks for
};

}  // namespace tesserine::cli
