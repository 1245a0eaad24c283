#pragma once

#include "base/Clock.h"
#include "base/Random.h"
#include "server/ServerDatabase.h"
#include "sync/WireRecords.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::server {

/// Who a request comes from.
struct Caller {
    std::string user;
    std::string session;   ///< of the device; for a personal API token that token's identifier
    bool isDevice = true;  ///< a personal API token may do less
};

/// The people of the household, their devices and their tokens. Of every secret only a digest is
/// kept. Safe from any thread.
class Accounts {
public:
    static constexpr std::chrono::seconds accessLifetime{3600};
    static constexpr std::chrono::seconds codeLifetime{300};
    /// How exactly the last use of a personal API token is known: each use noted costs a write.
    static constexpr std::chrono::seconds useInterval{60};

    /// New passwords are kept by so many rounds of PBKDF2.
    static constexpr int usualPasswordRounds = 600'000;

    Accounts(ServerDatabase& database, const Clock& clock, Random& random, int passwordRounds)
        : database_(database), clock_(clock), random_(random), passwordRounds_(passwordRounds) {}

    /// Adds a person, or gives one who is there another password. An address counts without case.
    void setPassword(const std::string& email, const std::string& password);
    /// A one-time code for the program to sign in with; none for a wrong address or password, which
    /// take the same time.
    std::optional<std::string> signIn(const std::string& email, const std::string& password);
    /// None when there is no such code, or it is too old. A code works once.
    std::optional<TokenResponse> exchange(const std::string& code, const std::string& label);
    /// New tokens for a refresh token. The old one goes on working until the new one was used: its
    /// answer may have been lost.
    std::optional<TokenResponse> refresh(const std::string& refreshToken);
    /// The session that has ended; none when there was no such token.
    std::optional<std::string> signOut(const std::string& refreshToken);

    std::optional<Caller> callerWith(const std::string& token);
    std::vector<DeviceSessionInfo> sessions(const Caller& caller);
    bool endSession(const std::string& user, const std::string& session);

    APITokenCreated createAPIToken(const std::string& user, const std::string& label);
    std::vector<APITokenInfo> apiTokens(const std::string& user);
    bool deleteAPIToken(const std::string& user, const std::string& id);

    /// 64 hexadecimal digits that nobody can guess.
    std::string newSecret();
    static std::string digestOf(const std::string& secret);

private:
    TokenResponse issue(
        SQLiteDatabase& database, const std::string& session, const std::string& refresh);
    std::optional<Caller> deviceWith(SQLiteDatabase& database, const std::string& digest);
    std::optional<Caller> scriptWith(const std::string& digest);

    ServerDatabase& database_;
    const Clock& clock_;
    Random& random_;
    const int passwordRounds_;
};

}  // namespace tesserine::server
