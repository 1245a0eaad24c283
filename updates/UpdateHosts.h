#pragma once

#include "base/WebAddress.h"

#include <string>
#include <vector>

namespace tesserine {

/// Which addresses of an update feed are trusted.
struct UpdateHosts {
    /// The product's own domain, lower case; names below it count as well.
    std::string domain;
    /// The hosts of the platform's app store, lower case.
    std::vector<std::string> storeHosts{"apps.apple.com", "itunes.apple.com"};

    /// For the feed, a download, fuller notes, and wherever they redirect to: "https" and a name
    /// within the domain, without user name. Throws `UpdateError` (insecureTransport,
    /// untrustedHost).
    void requireOwn(const WebAddress& address) const;
    /// For a page in the store: one of its hosts, and no user name. Throws `UpdateError`
    /// (untrustedHost).
    void requireStore(const WebAddress& address) const;
};

}  // namespace tesserine
