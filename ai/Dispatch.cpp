#include "ai/Dispatch.h"

#include "ai/ModelReply.h"
#include "base/Text.h"
#include "base/UTF8.h"
#include "base/WebAddress.h"

#include <utility>

namespace tesserine {
namespace {

bool isHarmless(char32_t point) {
    const bool isControl = point < 0x20 || (point >= 0x7F && point <= 0x9F);
    const bool turns = (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
    return point == '\n' || point == '\t' || (!isControl && !turns);
}

std::string harmless(std::string_view text) {
    std::string kept;
    while (!text.empty()) {
        const utf8::Scalar scalar = utf8::first(text);
        if (isHarmless(scalar.value)) kept.append(text.substr(0, scalar.length));
        text.remove_prefix(scalar.length);
    }
    return kept;
}

bool isOfTheWeb(const WebCitation& citation) {
    const auto address = WebAddress::parse(citation.url);
    return address && !address->host.empty() && !address->hasUserInfo
           && (address->scheme == "https" || address->scheme == "http");
}

}  // namespace

std::string exactRequest(const AISettings& settings, const AIRequest& request) {
    return settings.backend == AISettings::Backend::relay ? ai::relay::requestBody(request)
                                                          : ai::grok::requestBody(request);
}

std::size_t characterCount(const AIRequest& request) {
    std::size_t count = text::characterCount(request.instructions);
    for (const AIMessage& message : request.messages) {
        count += text::characterCount(message.content);
    }
    return count;
}

AIResponse dispatch(
    AIProvider& provider,
    const AIRequest& request,
    SentLog& log,
    SentRequest record,
    const std::stop_token& stop) {
    record.destination = provider.destination();
    record.characterCount = characterCount(request);
    log.add(record);
    return presentable(provider.complete(request, stop));
}

AIResponse presentable(AIResponse response) {
    response.text = harmless(response.text);
    std::erase_if(
        response.webCitations, [](const WebCitation& citation) { return !isOfTheWeb(citation); });
    for (WebCitation& citation : response.webCitations) {
        if (citation.title) citation.title = text::collapsed(harmless(*citation.title));
    }
    return response;
}

}  // namespace tesserine
