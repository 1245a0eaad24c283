#pragma once

#include "base/Clock.h"
#include "base/Encoding.h"
#include "base/HTTP.h"
#include "base/Random.h"
#include "sync/SyncReply.h"
#include "sync/SyncRetryPolicy.h"
#include "sync/WireRecords.h"

#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {

/// How the server answered the wish to delete a blob.
struct BlobDeletion {
    enum class Outcome {
        deleted,
        wasGone,
        inUse,  ///< something elsewhere in the account refers to it
        later,  ///< the server cannot say yet, or could not be reached: ask again some time
    };
    Outcome outcome = Outcome::deleted;
    std::int64_t freed = 0;  ///< bytes
};

/// Speaks with the sync service: one request for each operation, tried again where that helps.
///
/// Every call blocks until its reply is there. It throws `SyncError`, or `OperationCancelled` soon
/// after `stop`, also while it waits for a retry. Safe from any thread: calls run side by side; the
/// client's own fields are never locked while the network is waited for.
class SyncClient {
public:
    /// Gives an access token that is good for a minute, or throws what the call then throws.
    using TokenSource = std::function<std::string(const std::stop_token& stop)>;

    /// What the client stands on; all of it outlives the client.
    struct Environment {
        HTTPTransport& session;
        const Clock& clock;
        Random& random;  ///< for jitter
    };

    /// Delays remembered for diagnosis.
    static constexpr std::size_t rememberedWaits = 50;

    /// `serviceURL` is the service's own address; the programming interface lies at "/api/" below.
    SyncClient(std::string serviceURL, Environment environment);
    SyncClient(const SyncClient&) = delete;
    SyncClient& operator=(const SyncClient&) = delete;
    ~SyncClient() = default;

    void setTokenSource(TokenSource token);
    SyncRetryPolicy retry() const;
    void setRetry(const SyncRetryPolicy& policy);
    /// The waits before retries, newest last.
    std::vector<Seconds> waits() const;
    /// Ends with "/api/".
    const std::string& baseURL() const noexcept { return baseURL_; }
    /// The address of the live channel.
    std::string liveChannelURL() const;

    ChangesResponse changes(std::int64_t since, int limit, const std::stop_token& stop = {});
    PushResponse push(const std::vector<SyncPush>& changes, const std::stop_token& stop = {});
    SyncStateResponse state(const std::stop_token& stop = {});
    /// The versions of a record that changes of other devices overwrote.
    std::vector<SyncRecord> revisions(const Uuid& record, const std::stop_token& stop = {});

    void uploadBlob(
        std::span<const std::uint8_t> bytes,
        const std::string& sha256,
        const std::string& mime,
        const std::stop_token& stop = {});
    /// The bytes as they came; whether they have that digest is for the caller to check.
    std::string downloadBlob(const std::string& sha256, const std::stop_token& stop = {});
    BlobDeletion deleteBlob(const std::string& sha256, const std::stop_token& stop = {});
    /// Those of `digests` that the server does not have.
    std::vector<std::string> missingBlobs(
        const std::vector<std::string>& digests, const std::stop_token& stop = {});
    BlobUsage blobUsage(const std::stop_token& stop = {});

    TokenResponse exchange(
        const std::string& code, const std::string& label, const std::stop_token& stop = {});
    TokenResponse refresh(const std::string& refreshToken, const std::stop_token& stop = {});
    void signOut(
        const std::string& refreshToken,
        const std::optional<std::string>& accessToken,
        const std::stop_token& stop = {});
    std::vector<JSONValue> sessions(const std::stop_token& stop = {});
    void revokeSession(const std::string& id, const std::stop_token& stop = {});

    ShareLink createShare(const Uuid& note, const std::stop_token& stop = {});
    void revokeShare(const Uuid& note, const std::stop_token& stop = {});
    ShareStatus shareStatus(const Uuid& note, const std::stop_token& stop = {});

    APITokenCreated createAPIToken(const std::string& label, const std::stop_token& stop = {});
    std::vector<APITokenInfo> apiTokens(const std::stop_token& stop = {});
    void revokeAPIToken(const std::string& id, const std::stop_token& stop = {});

private:
    struct Call;

    HTTPReply perform(const Call& call, const std::stop_token& stop);
    HTTPRequest requestFor(const Call& call, const std::stop_token& stop);
    HTTPReply receive(const Call& call, HTTPRequest request, const std::stop_token& stop);
    void passBlobGate(const std::stop_token& stop);
    std::optional<Seconds> waitAfter(const SyncError& error, int retries);
    void sleep(Seconds delay, const std::stop_token& stop) const;
    template <class Record>
    Record ask(const Call& call, const std::stop_token& stop);

    // Fixed after construction.
    const std::string baseURL_;
    const Environment environment_;
    // Behind the mutex.
    mutable std::mutex mutex_;
    TokenSource token_;
    SyncRetryPolicy retry_;
    std::vector<Seconds> waits_;
    std::optional<std::chrono::nanoseconds> blobGate_;  // when the last blob request left
};

}  // namespace tesserine
