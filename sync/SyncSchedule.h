#pragma once

#include "base/Clock.h"
#include "sync/LiveUpdates.h"
#include "sync/SyncError.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace tesserine {

/// When the next synchronisation is due: after a change here, at news from the service, and every
/// few minutes; after a failure later and later. Pure but for the clock. Not synchronised.
class SyncSchedule {
public:
    /// How often to ask `isDue`.
    static constexpr std::chrono::milliseconds look{250};
    /// The first change after a quiet time is due at once; those that follow wait for so long after
    /// the last one was sent, so that many keys go together.
    static constexpr std::chrono::seconds afterChange{2};
    static constexpr std::chrono::minutes interval{5};
    static constexpr std::chrono::seconds firstPause{5};  // doubles with every failure
    static constexpr std::chrono::minutes longestPause{15};

    /// Looks for news of other devices after `patience`.
    explicit SyncSchedule(const Clock& clock, std::chrono::nanoseconds patience = interval)
        : clock_(clock), interval_(patience) {}

    /// `transaction` is the last one of the library's history.
    bool isDue(std::int64_t transaction);
    /// How long until `isDue`, if nothing changes; never negative.
    std::chrono::nanoseconds untilDue() const;
    /// The other side has news.
    void wake() { next_ = clock_.monotonic(); }
    /// The way to the service may be open again: a pause that the server did not ask for is over.
    void tryAgain();
    /// The live channel told something; `cursor` is the number of the last change we have seen.
    void hear(const LiveNews& news, std::int64_t cursor);
    void succeeded(std::int64_t transaction);
    /// A failure that is worth another try.
    void failed(const SyncError& error);

private:
    void endOwnPause();

    const Clock& clock_;
    const std::chrono::nanoseconds interval_;
    std::chrono::nanoseconds next_{0};
    std::optional<std::chrono::nanoseconds> lastSent_;  // when a change of ours was synchronised
    bool hasChange_ = false;                            // since then
    std::int64_t known_ = 0;                            // the last transaction that was seen
    std::optional<std::chrono::nanoseconds> pauseUntil_;
    bool isPauseAsked_ = false;  // by the server
    Seconds pause_{0};
};

}  // namespace tesserine
