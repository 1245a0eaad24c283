#pragma once

#include "base/HTTP.h"
#include "base/Log.h"

#include <stop_token>
#include <string>
#include <string_view>

namespace tesserine::ai {

/// Sends a request with a JSON body for `seconds` without progress at most, and brings whatever is
/// answered. Throws `AIError` (offline, cancelled, invalidResponse with `noReply` when what came is
/// no HTTP).
struct Exchange {
    std::string url;
    std::string token;  ///< goes into the authorisation header
    std::string body;
    HTTPHeaders furtherHeaders{};
    std::string_view noReply;
};
HTTPReply send(
    HTTPTransport& session, Exchange exchange, const Log& log, const std::stop_token& stop);

/// `base` with `component` behind it, one slash between them.
std::string joinedPath(std::string_view base, std::string_view component);
/// The host of an address, for people; the address when it has none.
std::string hostOf(const std::string& address);

}  // namespace tesserine::ai
