#include "ai/ModelExchange.h"

#include "ai/AIError.h"
#include "base/OperationCancelled.h"
#include "base/WebAddress.h"

#include <chrono>
#include <utility>

namespace tesserine::ai {
namespace {

/// Time without progress after which an answer is no longer waited for.
constexpr std::chrono::seconds patience{90};
/// Longer answers are not read.
constexpr std::size_t largestReply = std::size_t{8} << 20;

AIError failureOf(const HTTPError& error, std::string_view noReply) {
    switch (error.kind()) {
    case HTTPError::Kind::malformed:
    case HTTPError::Kind::badRequest: return AIError::invalidResponse(std::string(noReply));
    case HTTPError::Kind::tooLarge:
        return AIError::invalidResponse("The reply was longer than Tesserine reads.");
    case HTTPError::Kind::unreachable:
    case HTTPError::Kind::untrusted: break;
    }
    return AIError::offline();
}

}  // namespace

HTTPReply send(
    HTTPTransport& session, Exchange exchange, const Log& log, const std::stop_token& stop) {
    HTTPRequest request{
        .method = "POST",
        .url = std::move(exchange.url),
        .headers =
            {{"Content-Type", "application/json"}, {"Authorization", "Bearer " + exchange.token}},
        .body = std::move(exchange.body),
        .inactivity = patience,
        .replyLimit = largestReply,
        .isRepeatable = false};
    for (HTTPHeader& header : exchange.furtherHeaders) {
        request.headers.push_back(std::move(header));
    }
    try {
        return session.send(request, stop);
    } catch (const OperationCancelled&) {
        throw AIError::cancelled();
    } catch (const HTTPError& error) {
        log.warning("no reply from the assistant's service: " + std::string(error.what()));
        throw failureOf(error, exchange.noReply);
    }
}

std::string joinedPath(std::string_view base, std::string_view component) {
    while (base.ends_with('/')) {
        base.remove_suffix(1);
    }
    return std::string(base).append("/").append(component);
}

std::string hostOf(const std::string& address) {
    const auto parsed = WebAddress::parse(address);
    return parsed && !parsed->host.empty() ? parsed->host : address;
}

}  // namespace tesserine::ai
