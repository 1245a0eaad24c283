#pragma once

#include "base/Uuid.h"

#include <set>

namespace tesserine {

class CDNote;
class StoreContext;

/// The attachments of `note` whose bytes are not here yet: their records came from another device.
/// Reads none of the bytes that are here. Throws `StoreError`.
std::set<Uuid> missingFiles(StoreContext& context, const CDNote& note);

}  // namespace tesserine
