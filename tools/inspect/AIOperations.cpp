#include "ai/AIError.h"
#include "ai/AISettings.h"
#include "ai/ModelReply.h"
#include "base/Text.h"
#include "tools/inspect/Operations.h"

#include <string>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

const char* nameOf(AIError::Kind kind) {
    switch (kind) {
    case AIError::Kind::rateLimited: return "rateLimited";
    case AIError::Kind::server: return "server";
    case AIError::Kind::invalidResponse: return "invalidResponse";
    case AIError::Kind::notConfigured: return "notConfigured";
    case AIError::Kind::disabled: return "disabled";
    case AIError::Kind::offline: return "offline";
    case AIError::Kind::requestTooLarge: return "requestTooLarge";
    case AIError::Kind::unauthorized: return "unauthorized";
    case AIError::Kind::accountUnauthorized: return "accountUnauthorized";
    case AIError::Kind::cancelled: return "cancelled";
    }
    return "";
}

/// The sentence is shown where it holds more than the case's name says.
value failure(const AIError& error) {
    object output{{"error", nameOf(error.kind())}};
    using Kind = AIError::Kind;
    const bool saysMore = error.kind() == Kind::rateLimited || error.kind() == Kind::server
                          || error.kind() == Kind::invalidResponse;
    if (saysMore) output["message"] = error.what();
    return output;
}

std::string header(const object& input, std::string_view name) {
    const value* const headers = input.if_contains("headers");
    if (headers == nullptr || !headers->is_object()) return "";
    for (const auto& [key, content] : headers->get_object()) {
        const std::string_view found(key.data(), key.size());
        if (text::asciiLowercased(found) == name && content.is_string()) {
            return std::string(content.get_string());
        }
    }
    return "";
}

AIResponse response(const object& input) {
    const std::string body = text(input, "body");
    const std::string retryAfter = header(input, "retry-after");
    const ai::ServiceReply reply{
        .status = static_cast<int>(integer(input, "status")),
        .body = body,
        .retryAfter = retryAfter};
    const std::string provider = text(input, "provider");
    if (provider == "grok") return ai::grok::response(reply, AISettings().model);
    if (provider == "relay") return ai::relay::response(reply);
    throw InputError("“provider” is neither grok nor relay");
}

value reply(const object& input) {
    try {
        const AIResponse answered = response(input);
        value usage = nullptr;
        if (answered.usage) {
            usage = object{
                {"inputTokens", answered.usage->inputTokens},
                {"outputTokens", answered.usage->outputTokens}};
        }
        return object{
            {"text", answered.text}, {"model", answered.model}, {"usage", std::move(usage)}};
    } catch (const AIError& error) {
        return failure(error);
    }
}

}  // namespace

void addAIOperations(Operations& operations) { operations.add("ai.reply", reply); }

}  // namespace tesserine::inspect
