#include "sync/SyncAddress.h"

#include "base/WebAddress.h"

#include <algorithm>

namespace tesserine::address {
namespace {

bool isUnreserved(char c) {
    constexpr std::string_view marks = "-._~";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
           || marks.find(c) != std::string_view::npos;
}

int portOf(const WebAddress& address) {
    return address.port.value_or(address.scheme == "https" ? 443 : 80);
}

std::string originOf(const WebAddress& address) {
    return address.scheme + "://" + address.host + ":" + std::to_string(portOf(address));
}

}  // namespace

std::string pathPiece(std::string_view id) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string piece;
    for (const char c : id) {
        if (isUnreserved(c)) {
            piece.push_back(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        piece += {'%', digits[byte >> 4], digits[byte & 0x0F]};
    }
    // Such a piece would be taken for a way up.
    if (piece == "." || piece == "..") return piece == "." ? "%2E" : "%2E%2E";
    return piece;
}

std::optional<std::string> sameOrigin(const std::string& address, const std::string& location) {
    const auto from = WebAddress::parse(address);
    if (!from) return std::nullopt;
    const bool isPath = location.starts_with('/') && !location.starts_with("//");
    const std::string target = isPath ? originOf(*from) + location : location;
    const auto to = WebAddress::parse(target);
    if (!to || to->hasUserInfo || originOf(*to) != originOf(*from)) return std::nullopt;
    return target;
}

}  // namespace tesserine::address
