// Records and files of an account.
#include "base/Digest.h"
#include "server/Exchange.h"
#include "server/Refusal.h"
#include "server/Service.h"

#include <algorithm>

namespace tesserine::server {

HTTPReply Service::changes(const Exchange& exchange) {
    constexpr std::int64_t usualPage = 200;
    return replied(records_.changes(
        exchange.caller.user, exchange.number("since", 0), exchange.number("limit", usualPage)));
}

HTTPReply Service::push(const Exchange& exchange) {
    std::vector<SyncPush> pushes;
    try {
        for (const auto& change : exchange.list("changes")) {
            pushes.push_back(wire::decode<SyncPush>(change));
        }
    } catch (const WireError&) {
        throw Refusal::unreadable();
    }
    const std::string& user = exchange.caller.user;
    const PushResponse response = records_.push(
        user, pushes, [&](const std::string& digest) { return blobs_.has(user, digest); });
    const bool isChanged = std::ranges::any_of(
        response.results, [](const PushResult& result) { return result.status == "applied"; });
    if (isChanged) live_.changed(user, response.head);
    return replied(response);
}

HTTPReply Service::state(const Exchange& exchange) {
    return replied(records_.state(exchange.caller.user));
}

HTTPReply Service::revisions(const Exchange& exchange) {
    return replied(RevisionsReply{records_.revisions(exchange.caller.user, exchange.identifier())});
}

// MARK: files

HTTPReply Service::missingBlobs(const Exchange& exchange) {
    BlobCheckReply reply;
    for (const auto& digest : exchange.list("sha256")) {
        if (!digest.is_string()) throw Refusal::unreadable();
        const std::string text(digest.get_string());
        if (!blobs_.has(exchange.caller.user, text)) reply.missing.push_back(text);
    }
    return replied(reply);
}

HTTPReply Service::blobUsage(const Exchange& exchange) {
    BlobUsage usage = blobs_.usage(exchange.caller.user);
    usage.quotaBytes = configuration_.quotas.files;
    return replied(usage);
}

HTTPReply Service::putBlob(const Exchange& exchange) {
    const std::string& digest = exchange.digest();
    const std::string& body = exchange.body;
    const std::string& user = exchange.caller.user;
    if (sha256Hex(bytesOf(body)) != digest) throw Refusal(400, "The file was damaged on its way.");
    if (blobs_.has(user, digest)) return done();
    if (const auto quota = configuration_.quotas.files) {
        const std::int64_t used = blobs_.usage(user).bytes.value_or(0);
        const bool fits = used + static_cast<std::int64_t>(body.size()) <= *quota;
        if (!fits) return {.status = 507};  // the client has a sentence of its own for this
    }
    blobs_.put(user, digest, bytesOf(body));
    return done();
}

HTTPReply Service::getBlob(const Exchange& exchange) {
    auto bytes = blobs_.get(exchange.caller.user, exchange.digest());
    if (!bytes) throw Refusal(404, "There is no such file.");
    return {
        .status = 200,
        .headers =
            {{"Content-Type", "application/octet-stream"}, {"X-Content-Type-Options", "nosniff"}},
        .body = *std::move(bytes)};
}

HTTPReply Service::deleteBlob(const Exchange& exchange) {
    const std::string& user = exchange.caller.user;
    const std::string& digest = exchange.digest();
    std::optional<std::int64_t> freed;
    const auto references =
        records_.removeUnused(user, digest, [&] { freed = blobs_.remove(user, digest); });
    if (!references.empty()) {
        const boost::json::object error{
            {"code", "in_use"},
            {"message", "The file is still in use."},
            {"references", boost::json::array(references.begin(), references.end())}};
        return replied(boost::json::object{{"error", error}}, 409);
    }
    if (!freed) throw Refusal(404, "There is no such file.");
    return replied(BlobDeleteReply{freed});
}

}  // namespace tesserine::server
