#pragma once

#include "base/HTTP.h"
#include "sync/WireRecords.h"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tesserine::test {

/// The sync service in memory: it answers requests in place of the network. Safe from any thread.
class FakeSyncServer final : public HTTPTransport {
public:
    /// What becomes of a change that was made on top of an old revision.
    enum class Stale { superseded, laterWins };

    HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) override;

    Stale stale = Stale::superseded;
    /// It gives no more than so many changes at once.
    std::size_t pageLimit = 200;
    /// Answers instead of the server where it returns something.
    std::function<std::optional<HTTPReply>(const HTTPRequest&)> instead;
    /// Changes the reply the server has given.
    std::function<void(const HTTPRequest&, HTTPReply&)> afterwards;
    std::string accountID = "account";

    /// How many changes were stored, and how many records were pushed at all.
    std::size_t storedCount() const { return storedCount_; }
    std::size_t pushedCount() const { return pushedCount_; }
    std::map<Uuid, SyncRecord> records() const;
    std::vector<SyncRecord> liveRecords(const std::string& kind) const;
    /// All bodies that the server ever held.
    std::string allBodies() const;

    /// Stores a record as another device would have.
    void put(SyncRecord record);
    /// Changes record and blobs by hand.
    void withRecords(const std::function<void(std::map<Uuid, SyncRecord>&)>& change);
    std::map<std::string, std::string> blobs;

private:
    HTTPReply answer(const HTTPRequest& request);
    HTTPReply changes(const std::string& query) const;
    HTTPReply push(const std::string& body);
    PushResult settle(const SyncPush& push);
    HTTPReply revisionsOf(const std::string& id) const;
    HTTPReply blob(const HTTPRequest& request, const std::string& digest);
    HTTPReply missingBlobs(const std::string& body) const;
    void store(SyncRecord record);

    mutable std::mutex mutex_;
    std::map<Uuid, SyncRecord> records_;
    std::map<std::int64_t, Uuid> order_;  // the last change of each record
    std::map<Uuid, std::vector<SyncRecord>> overwritten_;
    std::vector<std::string> bodies_;
    std::int64_t seq_ = 0;
    std::size_t storedCount_ = 0;
    std::size_t pushedCount_ = 0;
    int tokens_ = 0;
};

/// A network that loses requests and answers and repeats requests, by the dice of `random`.
class LossyNetwork final : public HTTPTransport {
public:
    LossyNetwork(HTTPTransport& service, std::function<unsigned(unsigned bound)> dice)
        : service_(service), dice_(std::move(dice)) {}

    HTTPReply send(const HTTPRequest& request, const std::stop_token& stop) override;

    /// Of a hundred requests so many meet a fault.
    unsigned faultPercent = 0;

private:
    HTTPTransport& service_;
    std::function<unsigned(unsigned bound)> dice_;
};

}  // namespace tesserine::test
