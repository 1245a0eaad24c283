#pragma once

#include "ai/AIMessage.h"

#include <stop_token>
#include <string>
#include <string_view>

namespace tesserine {

/// Carries one request to a language model and brings its answer. Safe from any thread.
class AIProvider {
public:
    AIProvider() = default;
    AIProvider(const AIProvider&) = delete;
    AIProvider& operator=(const AIProvider&) = delete;
    virtual ~AIProvider() = default;

    /// For logs and settings, such as "grok".
    virtual std::string_view identifier() const = 0;
    /// As people read it, such as "xAI Grok".
    virtual std::string_view displayName() const = 0;
    /// The host that the request goes to, for what is shown before it is sent.
    virtual std::string destination() const = 0;

    /// Blocks until the answer is there. Throws `AIError`. Sends once, whatever happens.
    virtual AIResponse complete(const AIRequest& request, const std::stop_token& stop) = 0;
};

}  // namespace tesserine
