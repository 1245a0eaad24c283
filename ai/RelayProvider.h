#pragma once

#include "ai/AIProvider.h"
#include "base/Log.h"

#include <functional>
#include <string>
#include <utility>

namespace tesserine {

class HTTPTransport;

/// Asks through the service, which forwards the request for a signed-in account.
class RelayProvider final : public AIProvider {
public:
    struct Setting {
        std::string baseURL;  ///< of `AISettings`
        HTTPTransport& session;
        /// The account's access token; may throw, which the caller of `complete` then sees.
        std::function<std::string(const std::stop_token&)> token;
        /// Told when the service refused the token.
        std::function<void()> refused = [] {};
        /// Whether there is a service and an account.
        bool configured = false;
        Log log{};
    };
    explicit RelayProvider(Setting setting) : setting_(std::move(setting)) {}

    std::string_view identifier() const override { return "tesserine-relay"; }
    std::string_view displayName() const override { return "Tesserine AI"; }
    std::string destination() const override;
    AIResponse complete(const AIRequest& request, const std::stop_token& stop) override;

private:
    Setting setting_;
};

}  // namespace tesserine
