#include "server/Accounts.h"

#include "base/Cipher.h"
#include "base/Digest.h"
#include "base/Text.h"

#include <array>

namespace tesserine::server {
namespace {

constexpr std::size_t saltSize = 16;

Bytes keyOf(const std::string& password, std::span<const std::uint8_t> salt, int rounds) {
    const SecretBytes key = cipher::deriveKey(password, salt, rounds);
    return {key.bytes().begin(), key.bytes().end()};
}

/// Takes as long for keys that differ early as for those that differ late.
bool isSameKey(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
    unsigned difference = a.size() == b.size() ? 0 : 1;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        difference |= static_cast<unsigned>(a[i] ^ b[i]);
    }
    return difference == 0;
}

std::string normalised(const std::string& email) { return text::caseFolded(text::trimmed(email)); }

std::optional<Instant> dateIn(const Statement& row, int column) {
    if (row.isNull(column)) return std::nullopt;
    return Instant::fromSeconds(row.real(column));
}

void forgetAccessTokens(SQLiteDatabase& database, const std::string& session) {
    Statement& remove = database.cached("DELETE FROM accessTokens WHERE session = ?");
    remove.bindText(1, session);
    remove.step();
}

}  // namespace

std::string Accounts::newSecret() {
    std::array<std::uint8_t, 32> bytes{};
    random_.fill(bytes);
    return hex(bytes);
}

std::string Accounts::digestOf(const std::string& secret) { return sha256Hex(bytesOf(secret)); }

void Accounts::setPassword(const std::string& email, const std::string& password) {
    Bytes salt(saltSize);
    random_.fill(salt);
    const Bytes key = keyOf(password, salt, passwordRounds_);
    const std::string id = Uuid::random(random_).wireText();
    database_.transact([&](SQLiteDatabase& database) {
        Statement& insert = database.cached(
            "INSERT INTO users (id, email, salt, key, rounds) VALUES (?, ?, ?, ?, ?) ON CONFLICT (email) "
            "DO UPDATE SET salt = excluded.salt, key = excluded.key, rounds = excluded.rounds");
        insert.bindText(1, id);
        insert.bindText(2, normalised(email));
        insert.bindBlob(3, salt);
        insert.bindBlob(4, key);
        insert.bindInteger(5, passwordRounds_);
        insert.step();
    });
}

std::optional<std::string> Accounts::signIn(const std::string& email, const std::string& password) {
    std::string user;
    Bytes salt(saltSize);
    Bytes key;
    int rounds = passwordRounds_;
    database_.read([&](SQLiteDatabase& database) {
        Statement& select =
            database.cached("SELECT id, salt, key, rounds FROM users WHERE email = ?");
        select.bindText(1, normalised(email));
        if (!select.step()) return;
        user = select.text(0).value_or("");
        salt.assign(select.blob(1).begin(), select.blob(1).end());
        key.assign(select.blob(2).begin(), select.blob(2).end());
        rounds = static_cast<int>(select.integer(3));
        select.reset();
    });
    const bool isRight = isSameKey(keyOf(password, salt, rounds), key);
    if (!isRight || user.empty()) return std::nullopt;
    std::string code = newSecret();
    database_.transact([&](SQLiteDatabase& database) {
        Statement& insert =
            database.cached("INSERT INTO codes (digest, user, expires) VALUES (?, ?, ?)");
        insert.bindText(1, digestOf(code));
        insert.bindText(2, user);
        insert.bindDouble(3, (clock_.now() + codeLifetime).seconds());
        insert.step();
    });
    return code;
}

std::optional<TokenResponse> Accounts::exchange(const std::string& code, const std::string& label) {
    const std::string session = Uuid::random(random_).wireText();
    const std::string refresh = newSecret();
    return database_.transact([&](SQLiteDatabase& database) -> std::optional<TokenResponse> {
        Statement& take =
            database.cached("DELETE FROM codes WHERE digest = ? RETURNING user, expires");
        take.bindText(1, digestOf(code));
        if (!take.step()) return std::nullopt;
        const std::string user = take.text(0).value_or("");
        const double expires = take.real(1);
        while (take.step()) {}
        if (expires < clock_.now().seconds()) return std::nullopt;
        Statement& insert = database.cached(
            "INSERT INTO sessions (id, user, label, lastUsed, refresh) VALUES (?, ?, ?, ?, ?)");
        insert.bindText(1, session);
        insert.bindText(2, user);
        insert.bindText(3, label);
        insert.bindDouble(4, clock_.now().seconds());
        insert.bindText(5, digestOf(refresh));
        insert.step();
        return issue(database, session, refresh);
    });
}

std::optional<TokenResponse> Accounts::refresh(const std::string& refreshToken) {
    const std::string next = newSecret();
    return database_.transact([&](SQLiteDatabase& database) -> std::optional<TokenResponse> {
        const std::string digest = digestOf(refreshToken);
        Statement& find =
            database.cached("SELECT id FROM sessions WHERE refresh = ?1 OR previousRefresh = ?1");
        find.bindText(1, digest);
        if (!find.step()) return std::nullopt;
        const std::string session = find.text(0).value_or("");
        find.reset();
        Statement& rotate = database.cached(
            "UPDATE sessions SET previousRefresh = ?1, refresh = ?2, lastUsed = ?3 WHERE id = ?4");
        rotate.bindText(1, digest);
        rotate.bindText(2, digestOf(next));
        rotate.bindDouble(3, clock_.now().seconds());
        rotate.bindText(4, session);
        rotate.step();
        return issue(database, session, next);
    });
}

TokenResponse Accounts::issue(
    SQLiteDatabase& database, const std::string& session, const std::string& refresh) {
    TokenResponse tokens{
        .account = {},
        .accessToken = newSecret(),
        .refreshToken = refresh,
        .expiresIn = accessLifetime.count()};
    Statement& old = database.cached("DELETE FROM accessTokens WHERE expires < ?");
    old.bindDouble(1, clock_.now().seconds());
    old.step();
    Statement& insert =
        database.cached("INSERT INTO accessTokens (digest, session, expires) VALUES (?, ?, ?)");
    insert.bindText(1, digestOf(tokens.accessToken));
    insert.bindText(2, session);
    insert.bindDouble(3, (clock_.now() + accessLifetime).seconds());
    insert.step();
    Statement& user = database.cached(
        "SELECT users.id, users.email FROM users JOIN sessions ON sessions.user = users.id "
        "WHERE sessions.id = ?");
    user.bindText(1, session);
    if (user.step()) {
        tokens.account.id = user.text(0).value_or("");
        tokens.account.email = user.text(1).value_or("");
    }
    user.reset();
    return tokens;
}

std::optional<std::string> Accounts::signOut(const std::string& refreshToken) {
    return database_.transact([&](SQLiteDatabase& database) -> std::optional<std::string> {
        Statement& session =
            database.cached("DELETE FROM sessions WHERE refresh = ?1 OR previousRefresh = ?1 "
                            "RETURNING id");
        session.bindText(1, digestOf(refreshToken));
        if (!session.step()) return std::nullopt;
        std::string id = session.text(0).value_or("");
        while (session.step()) {}
        forgetAccessTokens(database, id);
        return id;
    });
}

std::optional<Caller> Accounts::callerWith(const std::string& token) {
    const std::string digest = digestOf(token);
    const auto device =
        database_.read([&](SQLiteDatabase& database) { return deviceWith(database, digest); });
    return device ? device : scriptWith(digest);
}

std::optional<Caller> Accounts::deviceWith(SQLiteDatabase& database, const std::string& digest) {
    Statement& select =
        database.cached("SELECT sessions.user, sessions.id FROM accessTokens "
                        "JOIN sessions ON sessions.id = accessTokens.session "
                        "WHERE accessTokens.digest = ? AND accessTokens.expires > ?");
    select.bindText(1, digest);
    select.bindDouble(2, clock_.now().seconds());
    if (!select.step()) return std::nullopt;
    Caller caller{.user = select.text(0).value_or(""), .session = select.text(1).value_or("")};
    select.reset();
    return caller;
}

std::optional<Caller> Accounts::scriptWith(const std::string& digest) {
    std::optional<Instant> lastUsed;
    auto caller = database_.read([&](SQLiteDatabase& database) -> std::optional<Caller> {
        Statement& select =
            database.cached("SELECT user, id, lastUsed FROM apiTokens WHERE digest = ?");
        select.bindText(1, digest);
        if (!select.step()) return std::nullopt;
        Caller found{
            .user = select.text(0).value_or(""),
            .session = select.text(1).value_or(""),
            .isDevice = false};
        lastUsed = dateIn(select, 2);
        select.reset();
        return found;
    });
    const bool isNoted = lastUsed && clock_.now() - *lastUsed < useInterval;
    if (!caller || isNoted) return caller;
    database_.transact([&](SQLiteDatabase& database) {
        Statement& update = database.cached("UPDATE apiTokens SET lastUsed = ? WHERE id = ?");
        update.bindDouble(1, clock_.now().seconds());
        update.bindText(2, caller->session);
        update.step();
    });
    return caller;
}

std::vector<DeviceSessionInfo> Accounts::sessions(const Caller& caller) {
    return database_.read([&](SQLiteDatabase& database) {
        std::vector<DeviceSessionInfo> list;
        Statement& select = database.cached(
            "SELECT id, label, lastUsed FROM sessions WHERE user = ? ORDER BY lastUsed DESC");
        select.bindText(1, caller.user);
        while (select.step()) {
            list.push_back(
                {.id = select.text(0).value_or(""),
                 .kind = "device",
                 .label = select.text(1).value_or(""),
                 .lastUsed = dateIn(select, 2),
                 .isCurrentDevice = select.text(0) == caller.session});
        }
        return list;
    });
}

bool Accounts::endSession(const std::string& user, const std::string& session) {
    return database_.transact([&](SQLiteDatabase& database) {
        Statement& remove = database.cached("DELETE FROM sessions WHERE id = ? AND user = ?");
        remove.bindText(1, session);
        remove.bindText(2, user);
        remove.step();
        if (database.changes() == 0) return false;
        forgetAccessTokens(database, session);
        return true;
    });
}

APITokenCreated Accounts::createAPIToken(const std::string& user, const std::string& label) {
    APITokenCreated token{
        .id = Uuid::random(random_).wireText(),
        .token = newSecret(),
        .label = label,
        .createdAt = clock_.now()};
    database_.transact([&](SQLiteDatabase& database) {
        Statement& insert = database.cached(
            "INSERT INTO apiTokens (id, user, label, digest, created) VALUES (?, ?, ?, ?, ?)");
        insert.bindText(1, token.id);
        insert.bindText(2, user);
        insert.bindText(3, label);
        insert.bindText(4, digestOf(token.token));
        insert.bindDouble(5, token.createdAt.seconds());
        insert.step();
    });
    return token;
}

std::vector<APITokenInfo> Accounts::apiTokens(const std::string& user) {
    return database_.read([&](SQLiteDatabase& database) {
        std::vector<APITokenInfo> list;
        Statement& select = database.cached(
            "SELECT id, label, created, lastUsed FROM apiTokens WHERE user = ? ORDER BY created");
        select.bindText(1, user);
        while (select.step()) {
            list.push_back(
                {.id = select.text(0).value_or(""),
                 .label = select.text(1).value_or(""),
                 .createdAt = Instant::fromSeconds(select.real(2)),
                 .lastUsedAt = dateIn(select, 3)});
        }
        return list;
    });
}

bool Accounts::deleteAPIToken(const std::string& user, const std::string& id) {
    return database_.transact([&](SQLiteDatabase& database) {
        Statement& remove = database.cached("DELETE FROM apiTokens WHERE id = ? AND user = ?");
        remove.bindText(1, id);
        remove.bindText(2, user);
        remove.step();
        return database.changes() > 0;
    });
}

}  // namespace tesserine::server
