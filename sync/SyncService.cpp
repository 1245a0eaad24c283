#include "sync/SyncService.h"

#include "base/Product.h"
#include "base/WebAddress.h"

namespace tesserine {
namespace {

bool isThisComputer(const std::string& host) {
    return host == "localhost" || host == "127.0.0.1" || host == "[::1]";
}

}  // namespace

SyncService::SyncService(const std::string& address, const Environment& environment)
    : environment_(environment),
      client_(
          address,
          {.session = environment.session,
           .clock = environment.clock,
           .random = environment.random}),
      account_(
          {.client = client_,
           .secrets = environment.secrets,
           .clock = environment.clock,
           .log = environment.log}) {
    client_.setTokenSource(
        [this](const std::stop_token& stop) { return account_.validAccessToken(stop); });
}

std::unique_ptr<LiveUpdates> SyncService::listen(LiveUpdates::Listener listener) {
    return std::make_unique<LiveUpdates>(
        LiveUpdates::Environment{
            .session = account_,
            .address = client_.liveChannelURL(),
            .clock = environment_.clock,
            .log = environment_.log,
            .socket = environment_.socket},
        std::move(listener));
}

std::string SyncService::address(
    const Preferences& preferences, const std::optional<std::string>& variable) {
    if (variable) return checked(*variable);
    if (const auto own = preferences.string(addressKey)) return checked(*own);
    if (!product::hasService) throw SyncSetupError::notSetUp();
    return std::string(product::serviceBaseURL);
}

std::string SyncService::checked(const std::string& address) {
    const auto parsed = WebAddress::parse(address);
    const bool isWeb = parsed && !parsed->host.empty() && !parsed->hasUserInfo;
    const bool isSafe = isWeb
                        && (parsed->scheme == "https"
                            || (parsed->scheme == "http" && isThisComputer(parsed->host)));
    const bool isPlain = address.find_first_of("?#") == std::string::npos;
    if (!isSafe || !isPlain) throw SyncSetupError::badAddress();
    return address;
}

std::string SyncService::secretService(const std::string& address) {
    std::string own(product::tokenSecretService);
    if (address == product::serviceBaseURL) return own;
    const auto parsed = WebAddress::parse(address);
    if (!parsed) return own + " " + address;
    const std::string port = parsed->port ? ":" + std::to_string(*parsed->port) : "";
    return own + " " + parsed->scheme + "://" + parsed->host + port;
}

}  // namespace tesserine
