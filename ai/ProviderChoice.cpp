#include "ai/ProviderChoice.h"

#include "ai/AICredentialStore.h"
#include "ai/AIError.h"
#include "ai/GrokProvider.h"
#include "ai/RelayProvider.h"

namespace tesserine {

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
    auto key = AICredentialStore(sources.secrets, sources.log, sources.address.host).read();
    // A server of the user's own may want none.
    if (!key && sources.address.isBuiltIn()) throw AIError::notConfigured();
    return std::make_unique<GrokProvider>(GrokProvider::Setting{
        .apiKey = std::move(key).value_or("none"),
        .baseURL = sources.address.baseURL,
        .session = sources.session,
        .log = sources.log});
}

}  // namespace tesserine
