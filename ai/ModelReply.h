#pragma once

#include "ai/AIMessage.h"
#include "base/HTTP.h"

#include <optional>
#include <string>
#include <string_view>

/// What is said to the two services that carry a request, and what they answer. Pure: knows no
/// network.
namespace tesserine::ai {

/// An HTTP reply as a provider judges it.
struct ServiceReply {
    int status = 0;
    std::string_view body;
    std::string_view retryAfter;  ///< the header of that name, empty when absent
};

/// The parts of `reply` that count, as views into it.
ServiceReply judged(const HTTPReply& reply);

namespace grok {
/// The JSON body of a request to the provider's "responses" endpoint.
std::string requestBody(const AIRequest& request);
/// Throws `AIError`. `requestedModel` answers for a reply that names none.
AIResponse response(const ServiceReply& reply, const std::string& requestedModel);
}  // namespace grok

namespace relay {
/// The model of a reply that names none.
inline constexpr const char* unnamedModel = "tesserine-relay";

/// The JSON body of a request to the service's "ask" endpoint.
std::string requestBody(const AIRequest& request);
/// Throws `AIError`.
AIResponse response(const ServiceReply& reply);
}  // namespace relay

}  // namespace tesserine::ai
