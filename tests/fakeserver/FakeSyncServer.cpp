#include "tests/fakeserver/FakeSyncServer.h"

#include "base/JSON.h"
#include "base/OperationCancelled.h"
#include "sync/WireCoding.h"

#include <algorithm>
#include <charconv>

namespace tesserine::test {
namespace {

using boost::json::array;
using boost::json::object;

HTTPReply fine(const object& body) { return {.status = 200, .body = json::write(body)}; }

std::int64_t parameter(const std::string& query, const std::string& name) {
    const std::size_t start = query.find(name + "=");
    std::int64_t number = 0;
    if (start == std::string::npos) return number;
    const char* const digits = query.data() + start + name.size() + 1;
    std::from_chars(digits, query.data() + query.size(), number);
    return number;
}

std::string bodyOf(const JSONObject& payload) {
    const auto found = payload.find("html");
    const bool isText = found != payload.end() && found->second.string() != nullptr;
    return isText ? *found->second.string() : "";
}

/// The digest of the file that a change names.
std::optional<std::string> fileOf(const SyncPush& push) {
    const auto found = push.payload.find("sha256");
    const bool isNamed = push.kind == "attachment" && !push.deleted && found != push.payload.end();
    if (!isNamed || found->second.string() == nullptr) return std::nullopt;
    return *found->second.string();
}

bool isSame(const SyncRecord& record, const SyncPush& push) {
    return record.deleted == push.deleted && (push.deleted || record.payload == push.payload);
}

}  // namespace

HTTPReply FakeSyncServer::send(const HTTPRequest& request, const std::stop_token& stop) {
    if (stop.stop_requested()) throw OperationCancelled();
    if (instead) {
        if (auto reply = instead(request)) return *std::move(reply);
    }
    HTTPReply reply = answer(request);
    if (afterwards) afterwards(request, reply);
    return reply;
}

HTTPReply FakeSyncServer::answer(const HTTPRequest& request) {
    const std::scoped_lock lock(mutex_);
    const std::string path = request.url.substr(request.url.find("/api/v1/") + 8);
    if (path.starts_with("auth/exchange") || path.starts_with("auth/refresh")) {
        const std::string number = std::to_string(++tokens_);
        return fine(
            {{"account", object{{"id", accountID}, {"email", "a@b.test"}}},
             {"access_token", "access" + number},
             {"refresh_token", "refresh" + number},
             {"expires_in", 3600}});
    }
    if (path.starts_with("sync/changes")) return changes(path);
    if (path == "sync/push") return push(*request.body);
    if (path == "sync/state") {
        return fine({{"head", seq_}, {"records", records_.size()}, {"tombstones", 0}});
    }
    if (path.starts_with("sync/revisions/")) return revisionsOf(path.substr(15));
    if (path == "blobs/check") return missingBlobs(*request.body);
    if (path.starts_with("blobs/")) return blob(request, path.substr(6));
    return {.status = 404};
}

HTTPReply FakeSyncServer::changes(const std::string& query) const {
    const std::int64_t since = parameter(query, "since");
    const auto asked = static_cast<std::size_t>(parameter(query, "limit"));
    const std::size_t limit = std::min(asked, pageLimit);
    array page;
    std::int64_t last = std::max(since, seq_);
    auto next = order_.upper_bound(since);
    for (; next != order_.end() && page.size() < limit; ++next) {
        page.push_back(wire::encode(records_.at(next->second)));
        last = next->first;
    }
    return fine(
        {{"changes", std::move(page)},
         {"seq", seq_ < since ? seq_ : last},
         {"head", seq_},
         {"more", next != order_.end()}});
}

HTTPReply FakeSyncServer::push(const std::string& body) {
    const auto request = json::parse(body);
    array results;
    for (const auto& change : request.at("changes").as_array()) {
        ++pushedCount_;
        results.push_back(wire::encode(settle(wire::decode<SyncPush>(change))));
    }
    return fine({{"results", std::move(results)}, {"head", seq_}});
}

PushResult FakeSyncServer::settle(const SyncPush& push) {
    PushResult result{.id = push.id, .status = "applied"};
    const auto found = records_.find(push.id);
    const bool isKnown = found != records_.end();
    if (isKnown && isSame(found->second, push)) {  // sent again: its answer was lost
        result.rev = found->second.rev;
        result.seq = found->second.seq;
        return result;
    }
    if (const auto digest = fileOf(push); digest && !blobs.contains(*digest)) {
        result.status = "refused";
        result.reason = "missing_attachment";
        return result;
    }
    const std::int64_t present = isKnown ? found->second.rev : 0;
    if (push.baseRev != present) {
        const bool mayWin = stale == Stale::laterWins && isKnown && !found->second.deleted
                            && !push.deleted && push.updatedAt > found->second.updatedAt;
        if (!mayWin) {
            result.status = "superseded";
            if (isKnown) result.server = found->second;
            return result;
        }
        overwritten_[push.id].push_back(found->second);
        result.displaced = true;
    }
    store(
        {.id = push.id,
         .kind = push.kind,
         .rev = present + 1,
         .deleted = push.deleted,
         .payload = push.payload,
         .updatedAt = push.updatedAt});
    result.rev = records_[push.id].rev;
    result.seq = records_[push.id].seq;
    return result;
}

void FakeSyncServer::store(SyncRecord record) {
    if (const auto old = records_.find(record.id); old != records_.end()) {
        order_.erase(old->second.seq);
    }
    record.seq = ++seq_;
    order_[record.seq] = record.id;
    ++storedCount_;
    bodies_.push_back(bodyOf(record.payload));
    records_[record.id] = std::move(record);
}

HTTPReply FakeSyncServer::revisionsOf(const std::string& id) const {
    array revisions;
    const auto found = overwritten_.find(Uuid::parse(id).value_or(Uuid()));
    if (found != overwritten_.end()) {
        for (const SyncRecord& record : found->second) {
            revisions.push_back(wire::encode(RecordRevision{
                .kind = record.kind,
                .reason = "overwritten",
                .updatedAt = record.updatedAt,
                .payload = record.payload}));
        }
    }
    return fine({{"revisions", std::move(revisions)}});
}

HTTPReply FakeSyncServer::blob(const HTTPRequest& request, const std::string& digest) {
    const auto found = blobs.find(digest);
    if (request.method == "PUT") {
        blobs[digest] = *request.body;
        return {.status = 204};
    }
    if (found == blobs.end()) return {.status = 404};
    if (request.method == "GET") return {.status = 200, .body = found->second};
    for (const auto& [id, record] : records_) {
        const auto file = record.payload.find("sha256");
        const bool isUsed =
            !record.deleted && file != record.payload.end() && file->second == JSONValue(digest);
        if (isUsed) {
            return {
                .status = 409, .body = R"({"error":{"references":[")" + id.wireText() + "\"]}}"};
        }
    }
    blobs.erase(found);
    return fine({});
}

HTTPReply FakeSyncServer::missingBlobs(const std::string& body) const {
    array missing;
    const auto request = json::parse(body);
    for (const auto& digest : request.at("sha256").as_array()) {
        if (!blobs.contains(std::string(digest.as_string()))) missing.push_back(digest);
    }
    return fine({{"missing", std::move(missing)}});
}

std::map<Uuid, SyncRecord> FakeSyncServer::records() const {
    const std::scoped_lock lock(mutex_);
    return records_;
}

std::vector<SyncRecord> FakeSyncServer::liveRecords(const std::string& kind) const {
    std::vector<SyncRecord> live;
    for (const auto& [id, record] : records()) {
        if (!record.deleted && record.kind == kind) live.push_back(record);
    }
    return live;
}

std::string FakeSyncServer::allBodies() const {
    const std::scoped_lock lock(mutex_);
    std::string all;
    for (const std::string& body : bodies_) {
        all += body;
    }
    return all;
}

void FakeSyncServer::put(SyncRecord record) {
    const std::scoped_lock lock(mutex_);
    record.rev = records_.contains(record.id) ? records_[record.id].rev + 1 : 1;
    store(std::move(record));
}

void FakeSyncServer::withRecords(const std::function<void(std::map<Uuid, SyncRecord>&)>& change) {
    const std::scoped_lock lock(mutex_);
    change(records_);
    order_.clear();
    for (const auto& [id, record] : records_) {
        order_[record.seq] = id;
    }
    seq_ = order_.empty() ? 0 : order_.rbegin()->first;
}

HTTPReply LossyNetwork::send(const HTTPRequest& request, const std::stop_token& stop) {
    if (dice_(100) >= faultPercent) return service_.send(request, stop);
    switch (dice_(4)) {
    case 0: throw HTTPError(HTTPError::Kind::unreachable, "lost on the way there");
    case 1: return {.status = 503};
    case 2: service_.send(request, stop); return service_.send(request, stop);
    default:
        service_.send(request, stop);
        throw HTTPError(HTTPError::Kind::unreachable, "lost on the way back");
    }
}

}  // namespace tesserine::test
