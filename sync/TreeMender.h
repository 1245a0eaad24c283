#pragma once

#include "base/Uuid.h"
#include "core/model/Schema.h"

#include <map>
#include <set>

namespace tesserine {

class StoreContext;
class SyncLedger;

/// The objects that records were applied to, by entity.
using TouchedObjects = std::map<EntityKind, std::set<Uuid>>;

/// Mends what no single record could see, on every device alike: rings of parents that two devices
/// closed together, and tags of one name that two devices made. Looks only at what `touched` names
/// and what stands above it. Works in `context` and never saves.
void mendTrees(StoreContext& context, const TouchedObjects& touched);

/// When a library has met its account for the first time: notebooks of one name in one place, some
/// of which the server knows and some not, become the oldest. Never saves.
void joinNotebooks(StoreContext& context, const SyncLedger& ledger);

}  // namespace tesserine
