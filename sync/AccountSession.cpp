#include "sync/AccountSession.h"

#include "base/Deadline.h"
#include "base/JSON.h"
#include "base/OperationCancelled.h"
#include "sync/AuthCallback.h"
#include "sync/SyncClient.h"
#include "sync/WireCoding.h"

#include <utility>

namespace tesserine {
namespace {

/// Runs `operation` on the secret store; what it cannot do is for the user to know, not a sign-out.
template <class Operation>
auto reachingSecrets(Operation operation) {
    try {
        return operation();
    } catch (const KeychainError&) {
        throw SyncError::keychainUnavailable();
    }
}

std::string encoded(const AccountInfo& account) { return json::write(wire::encode(account)); }

}  // namespace

AccountSession::AccountSession(Environment environment)
    : environment_(std::move(environment)), log_(environment_.log.category("session")) {}

AccountSession::~AccountSession() { writeUnstored(); }

std::optional<AccountInfo> AccountSession::account() {
    std::uint64_t epoch = 0;
    {
        const std::scoped_lock lock(mutex_);
        if (account_) return account_;
        epoch = epoch_;
    }
    const auto stored = reachingSecrets([this] { return environment_.secrets.read(accountKey); });
    if (!stored) return std::nullopt;
    try {
        const auto account = wire::decodeText<AccountInfo>(*stored);
        const std::scoped_lock lock(mutex_);
        if (epoch == epoch_) account_ = account;
        return account;
    } catch (const WireError&) {
        log_.error("the stored account cannot be read");
        return std::nullopt;
    }
}

std::string AccountSession::beginSignIn() {
    const std::scoped_lock lock(mutex_);
    signInBegan_ = environment_.clock.now();
    return environment_.client.baseURL() + "v1/auth/google/start?flow=app";
}

bool AccountSession::isSignInPending() {
    const std::scoped_lock lock(mutex_);
    return signInBegan_ && environment_.clock.now() - *signInBegan_ <= signInPatience;
}

void AccountSession::cancelSignIn() {
    const std::scoped_lock lock(mutex_);
    signInBegan_.reset();
}

bool AccountSession::handleCallback(
    const std::string& address, const std::string& deviceLabel, const std::stop_token& stop) {
    if (!isSignInPending()) return false;
    const auto end = [this] {
        const std::scoped_lock lock(mutex_);
        signInBegan_.reset();
    };
    std::optional<AuthCallback> callback;
    try {
        callback = AuthCallback::parse(address);
    } catch (const SyncError&) {
        end();
        throw;
    }
    if (!callback) return false;
    end();
    if (callback->kind == AuthCallback::Kind::failed) throw SignInError(callback->text);
    completeSignIn(callback->text, deviceLabel, stop);
    return true;
}

void AccountSession::completeSignIn(
    const std::string& code, const std::string& deviceLabel, const std::stop_token& stop) {
    const TokenResponse tokens = environment_.client.exchange(code, deviceLabel, stop);
    const auto former = reachingSecrets([&] {
        auto stored = environment_.secrets.read(refreshKey);
        environment_.secrets.write(refreshKey, tokens.refreshToken);
        environment_.secrets.write(accountKey, encoded(tokens.account));
        return stored;
    });
    {
        const std::scoped_lock lock(mutex_);
        ++epoch_;
        refusedToken_.reset();
        unstoredRefreshToken_.reset();
        keep(tokens);
    }
    // Otherwise this computer would stand twice among the account's devices.
    if (former) tellSignOut(*former, std::nullopt);
}

/// Called under the lock.
void AccountSession::keep(const TokenResponse& tokens) {
    accessToken_ = tokens.accessToken;
    accessExpiry_ =
        environment_.clock.now() + Instant::Duration(static_cast<double>(tokens.expiresIn));
    account_ = tokens.account;
}

std::string AccountSession::validAccessToken(const std::stop_token& stop) {
    writeUnstored();
    if (auto token = usableToken()) return *std::move(token);
    return refresh_.run(stop, [this](const std::stop_token& ownStop) {
        // Another refresh may have ended between the two looks.
        if (auto token = usableToken()) return *std::move(token);
        return refreshNow(ownStop);
    });
}

void AccountSession::invalidateAccessToken() {
    const std::scoped_lock lock(mutex_);
    accessToken_.reset();
}

std::optional<std::string> AccountSession::usableToken() {
    const std::scoped_lock lock(mutex_);
    const bool isGood = accessToken_ && isUsable(accessExpiry_, environment_.clock.now());
    return isGood ? accessToken_ : std::nullopt;
}

std::string AccountSession::refreshNow(const std::stop_token& stop) {
    const std::string ours = refreshToken();
    std::uint64_t epoch = 0;
    {
        const std::scoped_lock lock(mutex_);
        if (refusedToken_ == ours) throw SyncError::signedOut();
        epoch = epoch_;
    }
    TokenResponse tokens;
    try {
        tokens = environment_.client.refresh(ours, stop);
    } catch (const SyncError& error) {
        const std::scoped_lock lock(mutex_);
        const bool isRefusal = error.kind() == SyncError::Kind::signedOut && epoch == epoch_;
        if (isRefusal) refusedToken_ = ours;
        throw;
    }
    bool isSomebodyElse = false;
    {
        const std::scoped_lock lock(mutex_);
        if (epoch != epoch_) throw SyncError::signedOut();  // signed out meanwhile
        isSomebodyElse = account_ && account_->id != tokens.account.id;
        keep(tokens);
        // The service has replaced the old token: this one must not get lost, stored or not.
        unstoredRefreshToken_ = tokens.refreshToken;
    }
    writeUnstored();
    // Nothing that was begun for one account is carried on with another.
    if (isSomebodyElse) throw SyncError::signedOut();
    return tokens.accessToken;
}

std::string AccountSession::refreshToken() {
    {
        const std::scoped_lock lock(mutex_);
        if (unstoredRefreshToken_) return *unstoredRefreshToken_;
    }
    auto stored = reachingSecrets([this] { return environment_.secrets.read(refreshKey); });
    if (!stored) throw SyncError::signedOut();
    return *std::move(stored);
}

/// Stores what a refresh brought; what fails is tried again at the next use.
void AccountSession::writeUnstored() {
    std::optional<std::string> token;
    std::optional<AccountInfo> account;
    {
        const std::scoped_lock lock(mutex_);
        token = unstoredRefreshToken_;
        account = account_;
    }
    if (!token) return;
    try {
        environment_.secrets.write(refreshKey, *token);
        if (account) environment_.secrets.write(accountKey, encoded(*account));
    } catch (const KeychainError& error) {
        log_.warning(std::string("the new token is not stored yet: ") + error.what());
        return;
    }
    const std::scoped_lock lock(mutex_);
    if (unstoredRefreshToken_ == token) unstoredRefreshToken_.reset();
}

void AccountSession::signOut() {
    std::optional<std::string> refresh;
    std::optional<std::string> access;
    try {
        refresh = refreshToken();
        access = usableToken();
    } catch (const SyncError&) {
        log_.info("signing out without a refresh token");
    }
    forget();
    if (refresh) tellSignOut(*refresh, access);
    reachingSecrets([this] {
        environment_.secrets.remove(refreshKey);
        environment_.secrets.remove(accountKey);
    });
    forget();  // what others read from the store until now
}

/// Waits for the service a little.
void AccountSession::tellSignOut(
    const std::string& refreshToken, const std::optional<std::string>& accessToken) {
    const Deadline patience(signOutPatience);
    try {
        environment_.client.signOut(refreshToken, accessToken, patience.token());
    } catch (const std::exception&) {
        log_.info("the service did not hear of the sign-out");
    }
}

void AccountSession::forget() {
    const std::scoped_lock lock(mutex_);
    ++epoch_;
    accessToken_.reset();
    account_.reset();
    unstoredRefreshToken_.reset();
    signInBegan_.reset();
}

}  // namespace tesserine
