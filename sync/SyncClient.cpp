#include "sync/SyncClient.h"

#include "base/JSON.h"
#include "base/OperationCancelled.h"
#include "base/Text.h"
#include "core/services/Limits.h"
#include "sync/SyncAddress.h"
#include "sync/WireCoding.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {
namespace {

using boost::json::object;

constexpr std::chrono::seconds blobUploadInactivity{300};
constexpr int redirectLimit = 5;

std::string apiURL(std::string serviceURL) {
    while (serviceURL.ends_with('/')) {
        serviceURL.pop_back();
    }
    return serviceURL + "/api/";
}

std::string blobPath(const std::string& sha256) {
    constexpr std::size_t digestLength = 64;
    const std::string digest = text::asciiLowercased(sha256);
    const bool isDigest = digest.size() == digestLength
                          && digest.find_first_not_of("0123456789abcdef") == std::string::npos;
    if (!isDigest) throw SyncError::malformed("bad blob address");
    return "v1/blobs/" + digest;
}

std::string sharePath(const Uuid& note) { return "v1/notes/" + note.wireText() + "/share"; }

bool isRedirect(const HTTPReply& reply) {
    constexpr std::array redirects = {301, 302, 303, 307, 308};
    return std::ranges::find(redirects, reply.status) != redirects.end()
           && reply.header("Location") != nullptr;
}

/// Only a reading request may go elsewhere as it is; the others need the server to say so.
bool keepsMethod(const HTTPRequest& request, int status) {
    return request.method == "GET" || status == 307 || status == 308;
}

SyncError syncError(const HTTPError& error, const std::string& path) {
    switch (error.kind()) {
    case HTTPError::Kind::unreachable:
    case HTTPError::Kind::untrusted: return SyncError::offline();
    case HTTPError::Kind::tooLarge:
    case HTTPError::Kind::malformed: return SyncError::malformed(error.what());
    case HTTPError::Kind::badRequest: break;
    }
    return SyncError::malformed("bad path " + path);
}

}  // namespace

/// One request as the table of operations describes it.
struct SyncClient::Call {
    enum class Auth { bearer, none };

    std::string method = "GET";
    std::string path{};
    std::optional<std::string> body{};  // JSON, unless it has a type of its own
    std::string contentType = "application/json";
    Auth auth = Auth::bearer;
    std::optional<std::string> givenToken{};  // instead of asking for one
    After500 after500 = After500::isFinal;
    bool isBlob = false;
    std::chrono::seconds inactivity{60};
    std::size_t replyLimit = std::size_t{64} << 20;

    static Call get(std::string path) {
        return {.path = std::move(path), .after500 = After500::mayRepeat};
    }
    static Call post(std::string path, std::optional<std::string> body = std::nullopt) {
        return {.method = "POST", .path = std::move(path), .body = std::move(body)};
    }
    static Call remove(std::string path) { return {.method = "DELETE", .path = std::move(path)}; }
};

SyncClient::SyncClient(std::string serviceURL, Environment environment)
    : baseURL_(apiURL(std::move(serviceURL))), environment_(environment) {}

void SyncClient::setTokenSource(TokenSource token) {
    const std::scoped_lock lock(mutex_);
    token_ = std::move(token);
}

SyncRetryPolicy SyncClient::retry() const {
    const std::scoped_lock lock(mutex_);
    return retry_;
}

void SyncClient::setRetry(const SyncRetryPolicy& policy) {
    const std::scoped_lock lock(mutex_);
    retry_ = policy;
}

std::vector<Seconds> SyncClient::waits() const {
    const std::scoped_lock lock(mutex_);
    return waits_;
}

std::string SyncClient::liveChannelURL() const {
    const std::size_t schemeEnd = std::min(baseURL_.find("://"), baseURL_.size());
    const bool isPlain = text::asciiLowercased(baseURL_.substr(0, schemeEnd)) == "http";
    return (isPlain ? "ws" : "wss") + baseURL_.substr(schemeEnd) + "v1/sync/socket";
}

// MARK: operations

ChangesResponse SyncClient::changes(std::int64_t since, int limit, const std::stop_token& stop) {
    return ask<ChangesResponse>(
        Call::get(
            "v1/sync/changes?since=" + std::to_string(since) + "&limit=" + std::to_string(limit)),
        stop);
}

PushResponse SyncClient::push(const std::vector<SyncPush>& changes, const std::stop_token& stop) {
    return ask<PushResponse>(Call::post("v1/sync/push", wire::pushBody(changes)), stop);
}

SyncStateResponse SyncClient::state(const std::stop_token& stop) {
    return ask<SyncStateResponse>(Call::get("v1/sync/state"), stop);
}

std::vector<SyncRecord> SyncClient::revisions(const Uuid& record, const std::stop_token& stop) {
    auto reply = ask<RevisionsReply>(Call::get("v1/sync/revisions/" + record.wireText()), stop);
    std::vector<SyncRecord> overwritten;
    for (RecordRevision& revision : reply.revisions) {
        if (revision.reason != "overwritten") continue;
        overwritten.push_back(
            {.id = record,
             .kind = std::move(revision.kind),
             .payload = std::move(revision.payload),
             .updatedAt = revision.updatedAt});
    }
    return overwritten;
}

void SyncClient::uploadBlob(
    std::span<const std::uint8_t> bytes,
    const std::string& sha256,
    const std::string& mime,
    const std::stop_token& stop) {
    perform(
        {.method = "PUT",
         .path = blobPath(sha256),
         .body = std::string(textOf(bytes)),
         .contentType = mime,
         .after500 = After500::mayRepeat,
         .isBlob = true,
         .inactivity = blobUploadInactivity},
        stop);
}

std::string SyncClient::downloadBlob(const std::string& sha256, const std::stop_token& stop) {
    Call call = Call::get(blobPath(sha256));
    call.isBlob = true;
    call.replyLimit = limits::attachmentBytes;
    return perform(call, stop).body;
}

BlobDeletion SyncClient::deleteBlob(const std::string& sha256, const std::stop_token& stop) {
    using Outcome = BlobDeletion::Outcome;
    constexpr int notFound = 404;
    Call call = Call::remove(blobPath(sha256));
    call.isBlob = true;
    try {
        const auto reply = ask<BlobDeleteReply>(call, stop);
        return {Outcome::deleted, reply.freed.value_or(0)};
    } catch (const SyncError& error) {
        const ServerProblem& problem = error.problem();
        if (problem.status == notFound) return {Outcome::wasGone};
        if (!problem.references.empty()) return {Outcome::inUse};
        if (problem.code == "indexing" || error.isTransient()) return {Outcome::later};
        throw;
    }
}

std::vector<std::string> SyncClient::missingBlobs(
    const std::vector<std::string>& digests, const std::stop_token& stop) {
    const boost::json::array asked(digests.begin(), digests.end());
    Call call = Call::post("v1/blobs/check", json::write(object{{"sha256", asked}}));
    call.after500 = After500::mayRepeat;
    return ask<BlobCheckReply>(call, stop).missing;
}

BlobUsage SyncClient::blobUsage(const std::stop_token& stop) {
    return ask<BlobUsage>(Call::get("v1/blobs"), stop);
}

TokenResponse SyncClient::exchange(
    const std::string& code, const std::string& label, const std::stop_token& stop) {
    Call call =
        Call::post("v1/auth/exchange", json::write(object{{"code", code}, {"label", label}}));
    call.auth = Call::Auth::none;
    return ask<TokenResponse>(call, stop);
}

TokenResponse SyncClient::refresh(const std::string& refreshToken, const std::stop_token& stop) {
    Call call = Call::post("v1/auth/refresh", json::write(object{{"refresh_token", refreshToken}}));
    call.auth = Call::Auth::none;
    return ask<TokenResponse>(call, stop);
}

void SyncClient::signOut(
    const std::string& refreshToken,
    const std::optional<std::string>& accessToken,
    const std::stop_token& stop) {
    Call call = Call::post("v1/auth/logout", json::write(object{{"refresh_token", refreshToken}}));
    call.auth = Call::Auth::none;
    call.givenToken = accessToken;
    perform(call, stop);
}

std::vector<JSONValue> SyncClient::sessions(const std::stop_token& stop) {
    return ask<SessionsReply>(Call::get("v1/auth/sessions"), stop).sessions;
}

void SyncClient::revokeSession(const std::string& id, const std::stop_token& stop) {
    perform(Call::post("v1/auth/sessions/" + address::pathPiece(id) + "/revoke"), stop);
}

ShareLink SyncClient::createShare(const Uuid& note, const std::stop_token& stop) {
    return ask<ShareLink>(Call::post(sharePath(note)), stop);
}

void SyncClient::revokeShare(const Uuid& note, const std::stop_token& stop) {
    perform(Call::remove(sharePath(note)), stop);
}

ShareStatus SyncClient::shareStatus(const Uuid& note, const std::stop_token& stop) {
    return ask<ShareStatus>(Call::get(sharePath(note)), stop);
}

APITokenCreated SyncClient::createAPIToken(const std::string& label, const std::stop_token& stop) {
    return ask<APITokenCreated>(
        Call::post("v1/api-tokens", json::write(object{{"label", label}})), stop);
}

std::vector<APITokenInfo> SyncClient::apiTokens(const std::stop_token& stop) {
    return ask<APITokensReply>(Call::get("v1/api-tokens"), stop).tokens;
}

void SyncClient::revokeAPIToken(const std::string& id, const std::stop_token& stop) {
    perform(Call::remove("v1/api-tokens/" + address::pathPiece(id)), stop);
}

// MARK: one request

template <class Record>
Record SyncClient::ask(const Call& call, const std::stop_token& stop) {
    const HTTPReply reply = perform(call, stop);
    try {
        return wire::decodeText<Record>(reply.body);
    } catch (const WireError& error) {
        throw SyncError::malformed(error.what());
    }
}

HTTPReply SyncClient::perform(const Call& call, const std::stop_token& stop) {
    for (int retries = 0;; ++retries) {
        if (call.isBlob) passBlobGate(stop);
        // What asking for a token throws is passed on as it is: it has been tried often enough.
        HTTPRequest request = requestFor(call, stop);
        std::optional<Seconds> delay;
        try {
            return receive(call, std::move(request), stop);
        } catch (const SyncError& error) {
            delay = waitAfter(error, retries);
            if (!delay) throw;
        }
        sleep(*delay, stop);
    }
}

HTTPRequest SyncClient::requestFor(const Call& call, const std::stop_token& stop) {
    HTTPRequest request{
        .method = call.method,
        .url = baseURL_ + call.path,
        .headers = {{"Accept", "application/json"}},
        .body = call.body,
        .inactivity = call.inactivity,
        .replyLimit = call.replyLimit,
        .isRepeatable = call.after500 == After500::mayRepeat};
    if (call.body) request.headers.push_back({"Content-Type", call.contentType});

    std::optional<std::string> token = call.givenToken;
    if (call.auth == Call::Auth::bearer) {
        std::unique_lock lock(mutex_);
        const TokenSource source = token_;
        lock.unlock();
        if (!source) throw SyncError::signedOut();
        token = source(stop);
    }
    if (token) request.headers.push_back({"Authorization", "Bearer " + *token});
    return request;
}

/// The reply to one try; redirects are followed within the service only, so that the token stays
/// there.
HTTPReply SyncClient::receive(const Call& call, HTTPRequest request, const std::stop_token& stop) {
    for (int redirects = 0;; ++redirects) {
        HTTPReply reply;
        try {
            reply = environment_.session.send(request, stop);
        } catch (const HTTPError& error) {
            throw syncError(error, call.path);
        }
        if (!isRedirect(reply)) {
            checkReply(reply, environment_.clock.now(), call.after500);
            return reply;
        }
        const auto target = address::sameOrigin(request.url, *reply.header("Location"));
        const bool isFollowed =
            target && redirects < redirectLimit && keepsMethod(request, reply.status);
        if (!isFollowed) throw SyncError::malformed("redirected");
        request.url = *target;
    }
}

/// How long to wait before the next try; none when there is none.
std::optional<Seconds> SyncClient::waitAfter(const SyncError& error, int retries) {
    const std::scoped_lock lock(mutex_);
    if (!retry_.allows(error, retries)) return std::nullopt;
    const Seconds delay = retry_.delay(retries, error.problem().retryAfter, environment_.random);
    waits_.push_back(delay);
    if (waits_.size() > rememberedWaits) waits_.erase(waits_.begin());
    return delay;
}

/// Each caller takes its place in the line before it waits, so that two never leave together.
void SyncClient::passBlobGate(const std::stop_token& stop) {
    using std::chrono::nanoseconds;
    std::unique_lock lock(mutex_);
    const nanoseconds now = environment_.clock.monotonic();
    const auto interval = std::chrono::duration_cast<nanoseconds>(retry_.blobInterval);
    const nanoseconds leaves = blobGate_ ? std::max(now, *blobGate_ + interval) : now;
    blobGate_ = leaves;
    lock.unlock();
    if (leaves > now) sleep(leaves - now, stop);
}

void SyncClient::sleep(Seconds delay, const std::stop_token& stop) const {
    const auto time = std::chrono::duration_cast<std::chrono::nanoseconds>(delay);
    if (!environment_.clock.sleep(time, stop)) throw OperationCancelled();
}

}  // namespace tesserine
