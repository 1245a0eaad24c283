#pragma once

#include "ai/AIProvider.h"
#include "ai/AISettings.h"
#include "ai/ProviderAddress.h"
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
    /// The account's access token; none while there is no service or nobody is signed in.
    std::function<std::string(const std::stop_token&)> accountToken{};
    Log log{};
};

/// The provider that the user chose. Throws `AIError`: `disabled` while the assistant is off,
/// `notConfigured` without a key or an account; and `KeychainError`.
std::unique_ptr<AIProvider> chooseProvider(
    const AISettings& settings, const ProviderSources& sources);

}  // namespace tesserine
