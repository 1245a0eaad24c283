#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/SecretStore.h"
#include "base/SingleFlight.h"
#include "base/UserError.h"
#include "sync/WireRecords.h"

#include <chrono>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

namespace tesserine {

class SyncClient;

/// The sign-in did not come to an end; `what()` is the sentence to show.
class SignInError final : public UserError {
public:
    using UserError::UserError;
};

/// Who is signed in, and the tokens that prove it.
///
/// The refresh token and the account live in the secret store; the access token only in memory. A
/// store that cannot be reached never signs out. The store is shared with other programs of this
/// user: a token that one of them has renewed, or a sign-in of theirs, is taken over. Safe from any
/// thread; several callers with a stale token cause one refresh. Nothing is locked while the
/// network or the store is waited for.
class AccountSession {
public:
    static constexpr const char* refreshKey = "refresh-token";
    static constexpr const char* accountKey = "account";
    /// An access token with less time than this is not used any more.
    static constexpr std::chrono::seconds leastTokenLife{60};
    /// A callback counts for so long after its sign-in was started here.
    static constexpr std::chrono::minutes signInPatience{10};
    static constexpr std::chrono::seconds signOutPatience{5};

    /// What the session stands on; all of it outlives the session.
    struct Environment {
        SyncClient& client;
        SecretStore& secrets;
        const Clock& clock;
        Log log{};  ///< its category becomes "session"
    };
    explicit AccountSession(Environment environment);
    AccountSession(const AccountSession&) = delete;
    AccountSession& operator=(const AccountSession&) = delete;
    /// Tries once more to store a token that could not be stored before.
    ~AccountSession();

    /// The signed-in account, as last stored. Throws `SyncError` (keychainUnavailable).
    std::optional<AccountInfo> account();

    /// Begins a sign-in and returns the address to open in a browser. Replaces one that is pending.
    std::string beginSignIn();
    /// Whether a sign-in that began here waits for its callback, and not for longer than it may.
    bool isSignInPending();
    /// Nobody waits for a callback any more.
    void cancelSignIn();
    /// Takes an address that was opened with the program. False when it is no callback, or nobody
    /// here is waiting for one. On success the account is signed in. Throws `SyncError` and
    /// `SignInError`.
    bool handleCallback(
        const std::string& address,
        const std::string& deviceLabel,
        const std::stop_token& stop = {});
    /// Trades the one-time code for tokens and stores them, then ends the session that was stored
    /// before. Throws `SyncError`; nobody is signed in then.
    void completeSignIn(
        const std::string& code, const std::string& deviceLabel, const std::stop_token& stop = {});

    /// An access token that is good for the next minute. Throws `SyncError`; `signedOut` also when
    /// somebody else turns out to be signed in by now, whom `account` names from then on.
    std::string validAccessToken(const std::stop_token& stop = {});
    /// The service refused the access token before its time: the next caller gets another one.
    void invalidateAccessToken();
    static bool isUsable(Instant expiry, Instant now) { return expiry - now > leastTokenLife; }

    /// Tells the service, waiting for it a little, and forgets tokens and account in any case. When
    /// the secret store could not be cleared throws `SyncError` (keychainUnavailable); the session
    /// itself has forgotten even then.
    void signOut();

private:
    std::optional<std::string> usableToken();
    std::string refreshNow(const std::stop_token& stop);
    std::string refreshToken();
    void keep(const TokenResponse& tokens);
    void tellSignOut(
        const std::string& refreshToken, const std::optional<std::string>& accessToken);
    void forget();
    void writeUnstored();

    // Fixed after construction.
    const Environment environment_;
    const Log log_;
    // Behind the mutex.
    std::mutex mutex_;
    std::optional<std::string> accessToken_;
    Instant accessExpiry_{};
    std::optional<AccountInfo> account_;
    std::optional<std::string> unstoredRefreshToken_;  // newer than what the store holds
    std::optional<Instant> signInBegan_;
    std::optional<std::string> refusedToken_;  // a refresh token the service does not know any more
    std::uint64_t epoch_ = 0;  // counts sign-ins and sign-outs, so that a late refresh is dropped

    SingleFlight<std::string> refresh_;
};

}  // namespace tesserine
