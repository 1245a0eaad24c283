#pragma once

#include "ai/AIProvider.h"
#include "base/Log.h"
#include "base/Product.h"

#include <string>

namespace tesserine {

class HTTPTransport;

/// Asks the provider directly, with the user's own key.
class GrokProvider final : public AIProvider {
public:
    struct Setting {
        std::string apiKey;
        /// The provider's API, ending in "/v1". Redirects are not followed: the key goes to this
        /// host alone.
        std::string baseURL = std::string(product::modelProviderBaseURL);
        HTTPTransport& session;
        Log log{};
    };
    explicit GrokProvider(Setting setting) : setting_(std::move(setting)) {}

    std::string_view identifier() const override { return "grok"; }
    std::string_view displayName() const override { return "xAI Grok"; }
    std::string destination() const override;
    AIResponse complete(const AIRequest& request, const std::stop_token& stop) override;

private:
    Setting setting_;
};

}  // namespace tesserine
