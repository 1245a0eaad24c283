#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "sync/JSONValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What travels between the program and the service: plain values. `WireCoding.h` writes and reads
/// them. Words of the service that we do not know are kept as they are.
namespace tesserine {

/// One object of the library as the server holds it.
struct SyncRecord {
    Uuid id;
    std::string kind;
    std::int64_t rev = 0;
    std::int64_t seq = 0;
    bool deleted = false;  ///< a tombstone: the object was deleted
    JSONObject payload{};
    Instant updatedAt{};
    friend bool operator==(const SyncRecord&, const SyncRecord&) = default;
};

/// One local change sent up, made on top of the server's revision `baseRev`.
struct SyncPush {
    Uuid id;
    std::string kind;
    std::int64_t baseRev = 0;
    bool deleted = false;
    Instant updatedAt{};
    JSONObject payload{};
};

/// The server's verdict on one `SyncPush`.
struct PushResult {
    Uuid id;
    std::string status;  ///< "applied", "superseded" or "refused"
    std::optional<std::int64_t> rev{};
    std::optional<std::int64_t> seq{};
    std::optional<bool> displaced{};  ///< a different version of another device was overwritten
    std::optional<std::string> reason{};
    std::optional<std::int64_t> limit{};     ///< bytes
    std::optional<std::int64_t> measured{};  ///< bytes
    std::optional<std::string> message{};
    std::optional<SyncRecord> server{};
};

struct PushResponse {
    std::vector<PushResult> results;
    std::int64_t head = 0;  ///< the account's newest sequence number after the push
};

struct ChangesResponse {
    std::vector<SyncRecord> changes;
    std::int64_t seq = 0;   ///< to ask from next time
    std::int64_t head = 0;  ///< the newest on the server
    bool more = false;
    /// Name the history up to what was asked from and up to `seq`. One change has two names only
    /// after the service was put back to an older state; a service may leave them out.
    std::optional<std::string> sinceMark{};
    std::optional<std::string> seqMark{};
};

struct SyncStateResponse {
    std::int64_t head = 0;
    std::int64_t records = 0;
    std::int64_t tombstones = 0;
    std::optional<std::int64_t> recordBytes{};
    std::optional<std::int64_t> revisionBytes{};
    std::optional<std::int64_t> recordQuotaBytes{};  ///< none: no limit
};

/// Storage of the account's attachment files.
struct BlobUsage {
    std::optional<std::int64_t> files{};
    std::optional<std::int64_t> bytes{};
    std::optional<std::int64_t> quotaBytes{};  ///< none: unmetered
};

struct AccountInfo {
    std::string id;
    std::string email;
    std::optional<std::string> name{};
    std::optional<std::string> pictureURL{};
    friend bool operator==(const AccountInfo&, const AccountInfo&) = default;
};

struct TokenResponse {
    AccountInfo account;
    std::string accessToken;
    std::string refreshToken;
    std::int64_t expiresIn = 0;  ///< seconds
};

/// A note's public link.
struct ShareLink {
    std::string id;
    std::string token;
    std::string url;
    Instant createdAt{};
};

struct ShareStatus {
    bool shared = false;
    std::optional<Instant> createdAt{};
};

/// A personal token just made; the only time its secret is known.
struct APITokenCreated {
    std::string id;
    std::string token;
    std::string label;
    Instant createdAt{};
    std::optional<Instant> expiresAt{};  ///< none: it does not expire
};

struct APITokenInfo {
    std::string id;
    std::string label;
    Instant createdAt{};
    std::optional<Instant> lastUsedAt{};
    std::optional<Instant> expiresAt{};
};

/// A version of a record that the server keeps in its history.
struct RecordRevision {
    std::string kind;
    std::string reason;  ///< why it was kept, such as "overwritten"
    Instant updatedAt{};
    JSONObject payload{};
};

// Replies that hold one list or number.
struct RevisionsReply {
    std::vector<RecordRevision> revisions;
};
struct BlobCheckReply {
    std::vector<std::string> missing;  ///< lower-case hexadecimal digests
};
struct BlobDeleteReply {
    std::optional<std::int64_t> freed{};  ///< bytes
};
struct SessionsReply {
    std::vector<JSONValue> sessions;
};
struct APITokensReply {
    std::vector<APITokenInfo> tokens;
};

/// What the service says about a request it did not fulfil; all of it may be missing.
struct ProblemBody {
    std::optional<std::string> code{};
    std::optional<std::string> message{};
    std::vector<std::string> references{};  ///< what still uses a blob
    std::optional<std::string> detail{};

    /// Reads any body, also one that is empty or no JSON. Never throws.
    static ProblemBody read(std::string_view body);
};

/// One signed-in device of the account.
struct DeviceSessionInfo {
    std::string id;
    std::string kind;
    std::string label;
    std::optional<Instant> lastUsed{};
    bool isCurrentDevice = false;

    /// None for what has no id; other members may be missing.
    static std::optional<DeviceSessionInfo> from(const JSONValue& session);
};

/// One version of a task, as shown in a comparison.
struct TaskVersion {
    std::string title;
    std::string notes;
    bool isDone = false;
    std::optional<Instant> dueDate{};
    bool dueHasTime = false;
    std::optional<Instant> reminderAt{};
    std::string recurrenceRule{};  ///< as stored; empty for none
    int priority = 4;
    Instant updatedAt{};

    static TaskVersion from(const SyncRecord& record);
};

}  // namespace tesserine
