#pragma once

#include "base/HTTP.h"
#include "base/Instant.h"

namespace tesserine {

/// Whether a request may be sent again after a 500, when nobody knows if it did its work.
enum class After500 { mayRepeat, isFinal };

/// Returns for a reply with a status from 200 to 299; every other one becomes the `SyncError` it
/// stands for and is thrown. `now` is what a date in "Retry-After" is measured from.
void checkReply(const HTTPReply& reply, Instant now, After500 after500);

}  // namespace tesserine
