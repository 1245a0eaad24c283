#include "ai/ProviderAddress.h"

#include "base/Preferences.h"
#include "base/Product.h"
#include "base/WebAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>
#include <cstdint>

namespace tesserine {
namespace {

struct Network {
    std::uint32_t prefix;
    std::uint32_t mask;
};
/// Loopback (RFC 1122, 3.2.1.3), private networks (RFC 1918), link-local (RFC 3927).
constexpr std::array<Network, 5> nearbyNetworks{{
    {0x7F000000, 0xFF000000},
    {0x0A000000, 0xFF000000},
    {0xAC100000, 0xFFF00000},
    {0xC0A80000, 0xFFFF0000},
    {0xA9FE0000, 0xFFFF0000},
}};

bool isNearbyIPv4(const std::string& host) {
    in_addr address{};
    if (inet_pton(AF_INET, host.c_str(), &address) != 1) return false;
    const std::uint32_t number = ntohl(address.s_addr);
    for (const Network& network : nearbyNetworks) {
        if ((number & network.mask) == network.prefix) return true;
    }
    return false;
}

/// Loopback, unique local (RFC 4193) and link-local (RFC 4291, 2.5.6) addresses.
bool isNearbyIPv6(const std::string& host) {
    in6_addr address{};
    if (host.size() < 2 || host.front() != '[') return false;
    const std::string number = host.substr(1, host.size() - 2);
    if (inet_pton(AF_INET6, number.c_str(), &address) != 1) return false;
    const bool isUniqueLocal = (address.s6_addr[0] & 0xFEU) == 0xFC;
    const bool isLinkLocal = address.s6_addr[0] == 0xFE && (address.s6_addr[1] & 0xC0U) == 0x80;
    return IN6_IS_ADDR_LOOPBACK(&address) || isUniqueLocal || isLinkLocal;
}

bool isNearby(const std::string& host) {
    return host == "localhost" || isNearbyIPv4(host) || isNearbyIPv6(host);
}

}  // namespace

ProviderAddress ProviderAddress::builtIn() {
    return {.baseURL = std::string(product::modelProviderBaseURL), .host = {}};
}

std::optional<ProviderAddress> ProviderAddress::own(std::string_view address) {
    const auto parsed = WebAddress::parse(address);
    const bool isWeb = parsed && (parsed->scheme == "http" || parsed->scheme == "https");
    if (!isWeb || parsed->hasUserInfo || !isNearby(parsed->host)) return std::nullopt;
    if (parsed->text.find_first_of("?#") != std::string::npos) return std::nullopt;
    const std::string port = parsed->port ? ":" + std::to_string(*parsed->port) : "";
    return ProviderAddress{.baseURL = parsed->text, .host = parsed->host + port};
}

ProviderAddress ProviderAddress::load(const Preferences& preferences) {
    const auto stored = preferences.string(preferencesKey);
    if (!stored) return builtIn();
    return own(*stored).value_or(builtIn());
}

void ProviderAddress::save(Preferences& preferences) const {
    if (isBuiltIn()) {
        preferences.remove(preferencesKey);
    } else {
        preferences.set(preferencesKey, baseURL);
    }
}

std::string explanation(AISettings::Backend backend, const ProviderAddress& address) {
    const bool isOwnServer = backend == AISettings::Backend::ownKey && !address.isBuiltIn();
    if (!isOwnServer) return std::string(explanation(backend));
    return "Questions go straight from this device to " + address.host
           + ". A key that you enter is kept in the desktop's keyring for this server alone.";
}

}  // namespace tesserine
