#include "sync/AuthCallback.h"

#include "base/PercentEncoding.h"
#include "base/Text.h"
#include "sync/SyncError.h"

#include <algorithm>

namespace tesserine {
namespace {

/// An address of the program's own scheme (RFC 3986, section 3). It is only compared, never opened.
struct Parts {
    std::string_view scheme;
    std::string_view host;
    std::string_view path;
    std::string_view query;
};

std::optional<Parts> split(std::string_view address) {
    const bool hasBlank =
        std::ranges::any_of(address, [](char c) { return static_cast<unsigned char>(c) <= ' '; });
    const std::size_t colon = address.find(':');
    if (hasBlank || colon == std::string_view::npos) return std::nullopt;

    Parts parts{.scheme = address.substr(0, colon)};
    std::string_view rest = address.substr(colon + 1);
    rest = rest.substr(0, rest.find('#'));
    if (const std::size_t mark = rest.find('?'); mark != std::string_view::npos) {
        parts.query = rest.substr(mark + 1);
        rest = rest.substr(0, mark);
    }
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        const std::size_t slash = std::min(rest.find('/'), rest.size());
        parts.host = rest.substr(0, slash);
        rest.remove_prefix(slash);
        if (const std::size_t at = parts.host.rfind('@'); at != std::string_view::npos) {
            parts.host.remove_prefix(at + 1);
        }
        parts.host = parts.host.substr(0, parts.host.find(':'));
    }
    parts.path = rest;
    return parts;
}

std::string decoded(std::string_view text) { return text::sanitized(percentDecoded(text)); }

/// The value of the first item called `name`; none without a "=".
std::optional<std::string> queryItem(std::string_view query, std::string_view name) {
    while (!query.empty()) {
        const std::string_view item = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(item.size() + 1, query.size()));
        const std::size_t equals = item.find('=');
        if (decoded(item.substr(0, equals)) != name) continue;
        if (equals == std::string_view::npos) return std::nullopt;
        return decoded(item.substr(equals + 1));
    }
    return std::nullopt;
}

bool isCallback(const Parts& parts, std::string_view scheme) {
    const bool isOurs = text::asciiLowercased(parts.scheme) == text::asciiLowercased(scheme);
    const std::string host = text::asciiLowercased(parts.host);
    if (!isOurs || host == "note") return false;  // a link to a note, whatever it is called
    return host == "auth" || decoded(parts.path) == "/auth";
}

std::string failure(const std::string& error) {
    if (error == "suspended") {
        return "That account is not active. Get in touch and we will sort it out.";
    }
    if (error == "auth_unconfigured") return "Sign-in is not switched on for this server yet.";
    return "Sign-in did not complete (" + error + "). Try again.";
}

}  // namespace

std::optional<AuthCallback> AuthCallback::parse(std::string_view address, std::string_view scheme) {
    const auto parts = split(address);
    if (!parts || !isCallback(*parts, scheme)) return std::nullopt;

    const auto code = queryItem(parts->query, "code");
    if (code && !code->empty()) return AuthCallback{Kind::code, *code};
    const auto error = queryItem(parts->query, "error");
    if (!error) return std::nullopt;
    if (*error == "not_invited") throw SyncError::notInvited();
    if (*error == "cancelled") throw SyncError::cancelled();
    return AuthCallback{Kind::failed, failure(*error)};
}

}  // namespace tesserine
