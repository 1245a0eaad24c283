#pragma once

#include "core/model/BookkeepingEntities.h"
#include "sync/WireRecords.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

class StoreContext;

/// The records that wait to be sent, in the order in which they are sent: what others refer to
/// first, parents before children, deletions last.
std::vector<Uuid> recordsToPush(StoreContext& context);

/// Why the server did not take a record; it is left alone until it changes.
struct PushRefusal {
    // Reasons of ours, beside those of the server.
    static constexpr const char* storageFull = "storage_full";  ///< no room for its file
    static constexpr const char* fileRefused = "file_refused";

    std::string reason;
    std::string message{};
    std::optional<std::int64_t> limit{};     ///< bytes
    std::optional<std::int64_t> measured{};  ///< bytes
    std::string digest{};                    ///< of the payload that was refused
};

/// The refusals that the library remembers, as one JSON text.
class PushRefusals {
public:
    PushRefusals() = default;
    explicit PushRefusals(const std::string& text);
    std::string text() const;

    const std::map<Uuid, PushRefusal>& all() const { return refusals_; }
    void add(const Uuid& record, PushRefusal refusal) { refusals_[record] = std::move(refusal); }
    void remove(const Uuid& record) { refusals_.erase(record); }
    /// The size of the smallest record with that reason, 0 when unknown; none when there is none.
    std::optional<std::int64_t> smallest(const std::string& reason) const;
    /// Forgets those with that reason, so that their records are sent again.
    void forget(const std::string& reason);
    bool holds(const Uuid& record, const std::string& digest) const;

private:
    std::map<Uuid, PushRefusal> refusals_;
};

/// Names a payload, so that a refused one is known again.
std::string payloadDigest(const JSONObject& payload);

}  // namespace tesserine
