#pragma once

#include "base/Instant.h"
#include "base/Random.h"
#include "sync/SyncError.h"

#include <optional>
#include <string_view>

namespace tesserine {

/// How often and how fast a failed request is tried again. Pure values and rules.
struct SyncRetryPolicy {
    int attempts = 5;  ///< retries of one request after its first try
    Seconds baseDelay{0.5};
    Seconds ceiling{30};         ///< of the delay computed here
    Seconds retryAfterCap{60};   ///< of the delay that the server asks for
    Seconds blobInterval{0.05};  ///< least time between two blob requests
    bool jitter = true;

    /// Whether a request that failed with `error` after `retries` retries is tried once more.
    bool allows(const SyncError& error, int retries) const;
    /// How long to wait before that. Doubles with every retry; jitter takes up to half of it away.
    Seconds delay(int retries, std::optional<Seconds> retryAfter, Random& random) const;
};

/// The delay a "Retry-After" header asks for: decimal seconds, or an HTTP date as seen from `now`
/// (a past one is 0). None for anything else.
std::optional<Seconds> parseRetryAfter(std::string_view header, Instant now);

}  // namespace tesserine
