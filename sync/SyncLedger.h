#pragma once

#include "core/model/BookkeepingEntities.h"
#include "sync/JSONValue.h"
#include "sync/UnresolvedLinks.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tesserine {

class StoreContext;

/// What sync keeps in the library of what it has sent and seen: one `CDSyncState` for each record,
/// and a few named values. Works in the context it is given and never saves by itself.
class SyncLedger {
public:
    // Names of values.
    static constexpr const char* cursor = "cursor";          ///< the sequence number to ask from
    static constexpr const char* cursorMark = "cursorMark";  ///< the history it belongs to
    static constexpr const char* account = "account";        ///< whose service the library follows
    static constexpr const char* lastSync = "lastSync";
    static constexpr const char* firstPullDone = "firstPullDone";
    static constexpr const char* historyMark = "history";  ///< "<history id> <number>"
    static constexpr const char* refusals = "refused";     ///< JSON, by record
    /// Before the identifier of a task: versions that lost, see `TaskConflicts`.
    static constexpr std::string_view conflictPrefix = "conflict ";

    explicit SyncLedger(StoreContext& context) : context_(context) {}

    CDSyncState* find(const Uuid& record) const;
    /// The state of a record, made when there is none.
    CDSyncState& at(const Uuid& record, std::string_view kind) const;

    /// Notes that a record was deleted here: the server is to be told, unless it never saw it.
    void markDeleted(const Uuid& record) const;

    std::optional<std::string> value(const std::string& name) const;
    void setValue(const std::string& name, const std::string& value) const;

    /// The payload that this device and the server last agreed on; none when they never did.
    static std::optional<JSONObject> agreed(CDSyncState& state);
    static void agree(CDSyncState& state, const JSONObject& payload);
    static void disagree(CDSyncState& state) { state.lastPayload = std::nullopt; }

    /// Read when they are first asked for.
    UnresolvedLinks& unresolved();
    /// Puts the unresolved links among the changes to be saved.
    void keepUnresolved();

    /// Digests of files whose last record here was deleted; the server may not need them any more.
    std::set<std::string> reclaimable() const;
    void setReclaimable(const std::set<std::string>& digests) const;
    /// Digests of files that the service keeps handing out with other bytes.
    std::set<std::string> damagedFiles() const;
    void setDamaged(const std::string& digest, bool isDamaged) const;

    /// Forgets every record and what was agreed with the server, as if nothing had ever been
    /// synced. The account and what people typed (versions that lost) stay.
    void forgetAll() const;

private:
    CDSyncMeta* meta(const std::string& name) const;
    std::set<std::string> digests(const char* name) const;
    void setDigests(const char* name, const std::set<std::string>& digests) const;

    StoreContext& context_;
    std::optional<UnresolvedLinks> unresolved_;
    std::string storedUnresolved_;
};

}  // namespace tesserine
