#pragma once

#include "base/Clock.h"
#include "server/ServerDatabase.h"
#include "sync/WireRecords.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::server {

/// What an account may keep, in bytes; none: no limit.
struct Quotas {
    std::optional<std::int64_t> records{};  ///< with their history
    std::optional<std::int64_t> files{};
    std::int64_t record = std::int64_t{16} << 20;  ///< one record
    std::int64_t file = 100'000'000;               ///< one file
};

/// The records of all accounts and their order. A change that was not made on top of the present
/// revision is not stored: its sender gets the present one, joins both and sends again. So no clock
/// decides anything. Safe from any thread.
class Records {
public:
    /// Earlier versions kept of one record.
    static constexpr int keptRevisions = 20;

    Records(ServerDatabase& database, const Quotas& quotas)
        : database_(database), quotas_(quotas) {}

    ChangesResponse changes(const std::string& user, std::int64_t since, std::int64_t limit);
    /// All of it in one transaction. `hasFile` tells whether the account has the file of a digest.
    PushResponse push(
        const std::string& user,
        const std::vector<SyncPush>& changes,
        const std::function<bool(const std::string& digest)>& hasFile);
    SyncStateResponse state(const std::string& user);
    /// The number of the latest change.
    std::int64_t head(const std::string& user);
    std::vector<RecordRevision> revisions(const std::string& user, const Uuid& record);
    std::optional<SyncRecord> record(const std::string& user, const Uuid& id);
    /// Calls `remove` unless a live record names the file of `digest`; tells which ones do. No push
    /// comes in between.
    std::vector<std::string> removeUnused(
        const std::string& user, const std::string& digest, const std::function<void()>& remove);

private:
    PushResult settle(
        SQLiteDatabase& database,
        const std::string& user,
        const SyncPush& push,
        const std::function<bool(const std::string& digest)>& hasFile);
    static std::optional<SyncRecord> find(
        SQLiteDatabase& database, const std::string& user, const Uuid& id);
    static void keepRevision(
        SQLiteDatabase& database, const std::string& user, const SyncRecord& record);
    static SyncStateResponse measured(SQLiteDatabase& database, const std::string& user);

    ServerDatabase& database_;
    const Quotas quotas_;
};

}  // namespace tesserine::server
