#pragma once

#include "ai/AIProvider.h"
#include "ai/AISettings.h"
#include "ai/ProviderAddress.h"
#include "ai/RelayAccount.h"
#include "base/Log.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>

namespace tesserine {

class HTTPTransport;
class SecretStore;

/// What providers are made of; all of it outlives them.
struct ProviderSources {
    HTTPTransport& session;
    SecretStore& secrets;  ///< of the service "app.tesserine.ai"
    ProviderAddress address = ProviderAddress::builtIn();
    /// Looks for the account that the relay asks for; it may throw `SyncError`. None, and an empty
    /// function, while there is no service or nobody is signed in.
    std::function<std::optional<RelayAccount>()> account{};
    Log log{};
};

/// The provider that the user chose. Throws `AIError`: `disabled` while the assistant is off,
/// `notConfigured` without a key or an account, or with a relay that is not of the account's
/// service; and `KeychainError` where the built-in provider's key cannot be read.
std::unique_ptr<AIProvider> chooseProvider(
    const AISettings& settings, const ProviderSources& sources);

}  // namespace tesserine
