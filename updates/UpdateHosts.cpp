#include "updates/UpdateHosts.h"

#include "updates/UpdateError.h"

#include <algorithm>

namespace tesserine {
namespace {

/// Where an address leads, for a sentence: its host, else all of it.
const std::string& target(const WebAddress& address) {
    return address.host.empty() ? address.text : address.host;
}

}  // namespace

void UpdateHosts::requireOwn(const WebAddress& address) const {
    if (address.scheme != "https") throw UpdateError::insecureTransport(address.text);
    if (!address.isWithin(domain) || address.hasUserInfo || address.hasIPHost()) {
        throw UpdateError::untrustedHost(target(address));
    }
}

void UpdateHosts::requireStore(const WebAddress& address) const {
    const bool isStore = std::ranges::find(storeHosts, address.host) != storeHosts.end();
    if (!isStore || address.hasUserInfo) throw UpdateError::untrustedHost(target(address));
}

}  // namespace tesserine
