#include "ai/ModelReply.h"

#include "ai/AIError.h"
#include "base/JSON.h"
#include "base/Text.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <charconv>
#include <system_error>

namespace tesserine::ai {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

/// Characters of a service's own explanation that are shown.
constexpr std::size_t longestExplanation = 200;

const value* member(const object& in, std::string_view key) {
    return in.if_contains({key.data(), key.size()});
}

const object* section(const object& in, std::string_view key) {
    const value* const found = member(in, key);
    return found != nullptr ? found->if_object() : nullptr;
}

/// The objects of a list; what is no object, or no list, does not count.
std::vector<const object*> objects(const object& in, std::string_view key) {
    std::vector<const object*> result;
    const value* const found = member(in, key);
    if (found == nullptr || !found->is_array()) return result;
    for (const value& item : found->get_array()) {
        if (const object* const held = item.if_object()) result.push_back(held);
    }
    return result;
}

/// Empty when absent or no string.
std::string text(const object& in, std::string_view key) {
    const value* const found = member(in, key);
    return found != nullptr && found->is_string() ? std::string(found->get_string()) : "";
}

std::optional<std::int64_t> count(const object& in, std::string_view key) {
    const value* const found = member(in, key);
    if (found == nullptr || !found->is_int64()) return std::nullopt;
    return found->get_int64();
}

std::optional<object> parsedObject(std::string_view body) {
    try {
        value parsed = json::parse(body);
        if (parsed.is_object()) return std::move(parsed.get_object());
    } catch (const json::JSONError&) {
        // What the text was instead is nobody's business in a sentence.
    }
    return std::nullopt;
}

object readable(std::string_view body) {
    auto parsed = parsedObject(body);
    if (!parsed) throw AIError::invalidResponse("The reply was not JSON.");
    return *std::move(parsed);
}

/// A count of seconds in digits, with a fraction or without; more than a day is a day.
std::optional<double> seconds(std::string_view header) {
    constexpr double longest = 86'400;
    header = text::trimmed(header);
    if (header.find_first_not_of("0123456789.") != std::string_view::npos) return std::nullopt;
    double delay = 0;
    const char* const end = header.data() + header.size();
    const auto [stopped, error] =
        std::from_chars(header.data(), end, delay, std::chars_format::fixed);
    if (error != std::errc() || stopped != end) return std::nullopt;
    return std::min(delay, longest);
}

/// Throws what a status other than 2xx means; `refused` is for 401 and 403.
void requireSuccess(const ServiceReply& reply, const AIError& refused) {
    if (reply.status >= 200 && reply.status < 300) return;
    if (reply.status == 401 || reply.status == 403) throw refused;
    if (reply.status == 413) throw AIError::requestTooLarge();
    if (reply.status == 429) throw AIError::rateLimited(seconds(reply.retryAfter));

    const auto body = parsedObject(reply.body);
    const object* const problem = body ? section(*body, "error") : nullptr;
    std::string message = problem != nullptr ? text(*problem, "message") : "";
    if (message.empty()) message = "The service did not explain why.";
    throw AIError::server(reply.status, std::string(text::prefix(message, longestExplanation)));
}

void addCitation(std::vector<WebCitation>& all, WebCitation citation) {
    const auto isKnown = [&citation](const WebCitation& other) {
        return other.url == citation.url;
    };
    if (citation.url.empty() || std::ranges::any_of(all, isKnown)) return;
    all.push_back(std::move(citation));
}

WebCitation citationOf(const object& source) {
    WebCitation citation{.url = text(source, "url")};
    if (auto title = text(source, "title"); !title.empty()) citation.title = std::move(title);
    return citation;
}

/// A list of sources, each an address or an object that holds one.
void addSources(std::vector<WebCitation>& all, const object& body) {
    const value* const found = member(body, "citations");
    if (found == nullptr || !found->is_array()) return;
    for (const value& source : found->get_array()) {
        if (source.is_string()) {
            addCitation(all, {.url = std::string(source.get_string())});
        } else if (const object* const held = source.if_object()) {
            addCitation(all, citationOf(*held));
        }
    }
}

std::optional<AIUsage> usageOf(const object& body) {
    const object* const usage = section(body, "usage");
    if (usage == nullptr) return std::nullopt;
    const auto input = count(*usage, "input_tokens");
    const auto output = count(*usage, "output_tokens");
    if (input && output) return AIUsage{*input, *output};
    const auto prompt = count(*usage, "prompt_tokens");
    const auto completion = count(*usage, "completion_tokens");
    if (prompt && completion) return AIUsage{*prompt, *completion};
    return std::nullopt;
}

array messagesOf(const AIRequest& request) {
    array messages;
    for (const AIMessage& message : request.messages) {
        const char* const role = message.role == AIMessage::Role::user ? "user" : "assistant";
        messages.push_back(object{{"role", role}, {"content", message.content}});
    }
    return messages;
}

/// Texts and sources of a reply in the provider's own form.
void takeOutput(AIResponse& response, const object& body) {
    for (const object* const item : objects(body, "output")) {
        if (text(*item, "type") != "message") continue;
        for (const object* const part : objects(*item, "content")) {
            if (text(*part, "type") != "output_text") continue;
            response.text += text(*part, "text");
            for (const object* const annotation : objects(*part, "annotations")) {
                addCitation(response.webCitations, citationOf(*annotation));
            }
        }
    }
}

/// The text of a reply in the form of a chat completion.
std::string chatText(const object& body) {
    const auto choices = objects(body, "choices");
    const object* const message = choices.empty() ? nullptr : section(*choices.front(), "message");
    return message != nullptr ? text(*message, "content") : "";
}

}  // namespace

ServiceReply judged(const HTTPReply& reply) {
    const std::string* const retryAfter = reply.header("Retry-After");
    return {
        .status = reply.status,
        .body = reply.body,
        .retryAfter = retryAfter != nullptr ? std::string_view(*retryAfter) : ""};
}

std::string grok::requestBody(const AIRequest& request) {
    object body{
        {"model", request.model},
        {"instructions", request.instructions},
        {"input", messagesOf(request)},
        {"max_output_tokens", request.maxOutputTokens},
        {"temperature", request.temperature},
        {"store", false}};
    if (request.enableWebSearch) body["tools"] = array{object{{"type", "web_search"}}};
    return json::write(body);
}

AIResponse grok::response(const ServiceReply& reply, const std::string& requestedModel) {
    requireSuccess(reply, AIError::unauthorized());
    const object body = readable(reply.body);
    AIResponse response{.usage = usageOf(body)};
    takeOutput(response, body);
    if (response.text.empty()) response.text = chatText(body);
    if (response.text.empty()) {
        const std::string status = text(body, "status");
        throw AIError::invalidResponse(
            "The service returned no text (status: " + (status.empty() ? "unknown" : status) + ")");
    }
    addSources(response.webCitations, body);
    response.model = text(body, "model");
    if (response.model.empty()) response.model = requestedModel;
    return response;
}

std::string relay::requestBody(const AIRequest& request) {
    return json::write(object{
        {"instructions", request.instructions},
        {"messages", messagesOf(request)},
        {"max_output_tokens", request.maxOutputTokens},
        {"temperature", request.temperature},
        {"web_search", request.enableWebSearch}});
}

AIResponse relay::response(const ServiceReply& reply) {
    requireSuccess(reply, AIError::accountUnauthorized());
    const object body = readable(reply.body);
    AIResponse response{
        .text = text(body, "text"), .model = text(body, "model"), .usage = usageOf(body)};
    if (response.text.empty()) throw AIError::invalidResponse("The relay returned no text.");
    addSources(response.webCitations, body);
    if (response.model.empty()) response.model = unnamedModel;
    return response;
}

}  // namespace tesserine::ai
