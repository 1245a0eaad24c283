#include "server/Exchange.h"

#include "base/JSON.h"
#include "base/PercentEncoding.h"
#include "base/Text.h"
#include "server/BlobFolder.h"
#include "server/Refusal.h"

#include <algorithm>
#include <charconv>

namespace tesserine::server {
namespace {

/// A member of a form or a query, "a=b&c=d".
std::optional<std::string> formMember(std::string_view form, std::string_view name) {
    while (!form.empty()) {
        const std::string_view item = form.substr(0, form.find('&'));
        form.remove_prefix(std::min(item.size() + 1, form.size()));
        const std::size_t equals = item.find('=');
        if (equals == std::string_view::npos || item.substr(0, equals) != name) continue;
        std::string value(item.substr(equals + 1));
        std::ranges::replace(value, '+', ' ');
        return text::sanitized(percentDecoded(value));
    }
    return std::nullopt;
}

}  // namespace

const std::string* Exchange::header(std::string_view name) const {
    for (const HTTPHeader& header : request.headers) {
        if (text::asciiLowercased(header.name) == name) return &header.value;
    }
    return nullptr;
}

std::int64_t Exchange::number(std::string_view name, std::int64_t otherwise) const {
    const auto text = formMember(query, name);
    if (!text) return otherwise;
    std::int64_t number = 0;
    const char* const end = text->data() + text->size();
    const auto [read, problem] = std::from_chars(text->data(), end, number);
    if (problem != std::errc{} || read != end || number < 0) throw Refusal::unreadable();
    return number;
}

std::string Exchange::field(std::string_view name) const {
    return formMember(body, name).value_or("");
}

boost::json::object Exchange::json() const {
    try {
        const auto value = json::parse(body);
        if (value.is_object()) return value.get_object();
    } catch (const json::JSONError&) {}
    throw Refusal::unreadable();
}

std::string Exchange::text(std::string_view key) const {
    const boost::json::object members = json();
    const auto* const member = members.if_contains(key);
    if (member == nullptr || !member->is_string()) throw Refusal::unreadable();
    return tesserine::text::sanitized(std::string(member->get_string()));
}

boost::json::array Exchange::list(std::string_view key) const {
    boost::json::object members = json();
    auto* const member = members.if_contains(key);
    if (member == nullptr || !member->is_array()) throw Refusal::unreadable();
    return std::move(member->get_array());
}

Uuid Exchange::identifier() const {
    const auto id = Uuid::parse(parameters.at(0));
    if (!id) throw Refusal(404, "There is no such record.");
    return *id;
}

const std::string& Exchange::digest() const {
    if (!BlobFolder::isDigest(parameters.at(0))) throw Refusal(404, "There is no such file.");
    return parameters.at(0);
}

HTTPReply replied(const boost::json::object& body, int status) {
    return {
        .status = status,
        .headers = {{"Content-Type", "application/json"}, {"Cache-Control", "no-store"}},
        .body = json::write(body)};
}

HTTPReply done() { return {.status = 204}; }

}  // namespace tesserine::server
