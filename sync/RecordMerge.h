#pragma once

#include "base/Instant.h"
#include "core/model/Schema.h"
#include "sync/JSONValue.h"

#include <optional>
#include <vector>

namespace tesserine {

/// One side of a merge.
struct RecordSide {
    const JSONObject& payload;
    Instant updatedAt;
};

/// What three-way merging made of two payloads.
struct RecordMerge {
    JSONObject merged;
    /// Whole payloads of which something did not get into `merged`, or that were joined.
    std::vector<JSONObject> replaced{};
    /// A choice was made between two texts: somebody should look at it.
    bool isConflict = false;
};

/// Joins `mine` and `theirs`, which both come from `base` (none: nothing is known of where they
/// come from). A member changed on one side is taken from it; changed on both, the later
/// `updatedAt` wins, of equals theirs. Sets of identifiers are merged as sets, bodies block by
/// block.
RecordMerge mergeRecords(
    EntityKind entity,
    const std::optional<JSONObject>& base,
    const RecordSide& mine,
    const RecordSide& theirs);

}  // namespace tesserine
