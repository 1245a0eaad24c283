#pragma once

#include "base/Uuid.h"

#include <map>
#include <string>

namespace tesserine {

class CDNote;
class StoreContext;

/// The attachments of `note` whose bytes are not here: their records came from another device. Each
/// with what is the matter, in the words that users read. Reads none of the bytes that are here.
/// Throws `StoreError`.
std::map<Uuid, std::string> missingFiles(StoreContext& context, const CDNote& note);

}  // namespace tesserine
