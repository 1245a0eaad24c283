#include "ai/GrokProvider.h"

#include "ai/ModelExchange.h"
#include "ai/ModelReply.h"

namespace tesserine {

std::string GrokProvider::destination() const { return ai::hostOf(setting_.baseURL); }

AIResponse GrokProvider::complete(const AIRequest& request, const std::stop_token& stop) {
    const HTTPReply reply = ai::send(
        setting_.session,
        {.url = ai::joinedPath(setting_.baseURL, "responses"),
         .token = setting_.apiKey,
         .body = ai::grok::requestBody(request),
         .noReply = "The service did not return an HTTP response."},
        setting_.log,
        stop);
    return ai::grok::response(ai::judged(reply), request.model);
}

}  // namespace tesserine
