#pragma once

#include "base/Uuid.h"
#include "core/model/Schema.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

enum class ChangeKind { inserted, updated, deleted };

/// What one commit did to one object.
struct ObjectChange {
    ChangeKind kind = ChangeKind::inserted;
    EntityKind entity = EntityKind::note;
    std::int64_t key = 0;
    std::optional<Uuid> uuid;
    /// Names of the attributes and relationships that changed; of an update only.
    std::vector<std::string> changed;
};

/// One commit in the library's history. `number` only grows, also across processes: followers
/// remember the last one they have seen, never a time.
struct StoreTransaction {
    std::int64_t number = 0;
    Instant timestamp;
    std::string author;  ///< the process that committed
    std::vector<ObjectChange> changes;
};

}  // namespace tesserine
