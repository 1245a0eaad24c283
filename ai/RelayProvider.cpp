#include "ai/RelayProvider.h"

#include "ai/AIError.h"
#include "ai/ModelExchange.h"
#include "ai/ModelReply.h"
#include "base/Product.h"

namespace tesserine {
namespace {

/// Names the program to the service, with the platform that the service knows.
std::string userAgent() {
    return std::string(product::name) + "/" + std::string(product::version) + " (macOS)";
}

}  // namespace

std::string RelayProvider::destination() const { return ai::hostOf(setting_.baseURL); }

AIResponse RelayProvider::complete(const AIRequest& request, const std::stop_token& stop) {
    if (!setting_.configured) throw AIError::notConfigured();
    const HTTPReply reply = ai::send(
        setting_.session,
        {.url = ai::joinedPath(setting_.baseURL, "ai/ask"),
         .token = setting_.token(stop),
         .body = ai::relay::requestBody(request),
         .furtherHeaders = {{"User-Agent", userAgent()}},
         .noReply = "The relay did not return an HTTP response."},
        setting_.log,
        stop);
    try {
        return ai::relay::response(ai::judged(reply));
    } catch (const AIError& error) {
        if (error.kind() == AIError::Kind::accountUnauthorized) setting_.refused();
        throw;
    }
}

}  // namespace tesserine
