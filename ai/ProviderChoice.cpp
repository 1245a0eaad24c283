#include "ai/ProviderChoice.h"

#include "ai/AICredentialStore.h"
#include "ai/AIError.h"
#include "ai/GrokProvider.h"
#include "ai/RelayProvider.h"

namespace tesserine {
namespace {

/// A server of the user's own may want no key, so that one works without a keyring as well.
std::string keyFor(const ProviderSources& sources) {
    const AICredentialStore store(sources.secrets, sources.log, sources.address.host);
    if (!sources.address.isBuiltIn()) {
        try {
            return store.read().value_or("none");
        } catch (const KeychainError&) {
            return "none";
        }
    }
    const auto key = store.read();
    if (!key) throw AIError::notConfigured();
    return *key;
}

}  // namespace

std::unique_ptr<AIProvider> chooseProvider(
    const AISettings& settings, const ProviderSources& sources) {
    if (!settings.isEnabled) throw AIError::disabled();
    if (settings.backend == AISettings::Backend::relay) {
        const auto account = sources.account ? sources.account() : std::nullopt;
        const auto base = account ? account->relayBaseURL(settings) : std::nullopt;
        if (!base) throw AIError::notConfigured();
        return std::make_unique<RelayProvider>(RelayProvider::Setting{
            .baseURL = *base,
            .session = sources.session,
            .token = account->token,
            .refused = account->refused,
            .configured = true,
            .log = sources.log});
    }
    return std::make_unique<GrokProvider>(GrokProvider::Setting{
        .apiKey = keyFor(sources),
        .baseURL = sources.address.baseURL,
        .session = sources.session,
        .log = sources.log});
}

}  // namespace tesserine
