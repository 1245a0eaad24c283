#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// A web address taken apart by the parser that will open it (libcurl's), so that what was judged
/// is what is fetched.
struct WebAddress {
    std::string text;    ///< as it was given
    std::string scheme;  ///< lower case; empty for an address that names none
    std::string host;    ///< lower case, IPv6 in brackets; empty when there is none
    std::optional<int> port;
    std::string path;          ///< with its "/", as it was given
    bool hasUserInfo = false;  ///< a user name or password stands before the host

    /// RFC 3986. None for an empty text, one with characters that no address may hold (such as
    /// spaces, control characters and everything beyond ASCII), or one that is not well formed.
    static std::optional<WebAddress> parse(std::string_view text);

    /// Where a reference in a document at this address leads, such as "../b" or a whole address.
    std::optional<WebAddress> resolved(std::string_view reference) const;

    /// Whether the host is an IP address, in any way of writing that a resolver takes for one.
    bool hasIPHost() const;
    /// Whether the host is `domain` or a name below it.
    bool isWithin(std::string_view domain) const;
};

}  // namespace tesserine
