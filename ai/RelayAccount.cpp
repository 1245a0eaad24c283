#include "ai/RelayAccount.h"

#include "ai/AIError.h"
#include "ai/AISettings.h"
#include "ai/ModelExchange.h"
#include "base/OperationCancelled.h"
#include "sync/SyncAddress.h"
#include "sync/SyncService.h"

namespace tesserine {
namespace {

std::string tokenOf(AccountSession& account, const std::stop_token& stop) {
    try {
        return account.validAccessToken(stop);
    } catch (const OperationCancelled&) {
        throw AIError::cancelled();
    } catch (const SyncError& error) {
        if (error.kind() == SyncError::Kind::signedOut) throw AIError::accountUnauthorized();
        if (error.kind() == SyncError::Kind::offline) throw AIError::offline();
        throw;
    }
}

}  // namespace

std::optional<RelayAccount> RelayAccount::of(SyncService& service) {
    AccountSession& account = service.account();
    if (!account.account()) return std::nullopt;
    return RelayAccount{
        .apiURL = service.client().baseURL(),
        .token = [&account](const std::stop_token& stop) { return tokenOf(account, stop); },
        .refused = [&account] { account.invalidateAccessToken(); }};
}

std::optional<std::string> RelayAccount::relayBaseURL(const AISettings& settings) const {
    const bool saysNothing = settings.relayBaseURL == AISettings().relayBaseURL;
    if (saysNothing) return ai::joinedPath(apiURL, "v1");
    return address::sameOrigin(apiURL, settings.relayBaseURL);
}

}  // namespace tesserine
