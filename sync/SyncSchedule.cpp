#include "sync/SyncSchedule.h"

#include <algorithm>

namespace tesserine {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;

bool SyncSchedule::isDue(std::int64_t transaction) {
    const nanoseconds now = clock_.monotonic();
    if (transaction != known_) {
        known_ = transaction;
        next_ = std::min(next_, now + afterChange);
    }
    const bool isPaused = pauseUntil_ && now < *pauseUntil_;
    return !isPaused && now >= next_;
}

nanoseconds SyncSchedule::untilDue() const {
    const nanoseconds due = std::max(next_, pauseUntil_.value_or(next_));
    return std::max(due - clock_.monotonic(), nanoseconds(0));
}

void SyncSchedule::succeeded(std::int64_t transaction) {
    known_ = transaction;
    next_ = clock_.monotonic() + interval_;
    pauseUntil_.reset();
    pause_ = Seconds(0);
}

void SyncSchedule::failed(const SyncError& error) {
    const Seconds longer = pause_.count() == 0 ? Seconds(firstPause) : pause_ * 2;
    pause_ = std::min(longer, Seconds(longestPause));
    const Seconds asked = error.problem().retryAfter.value_or(pause_);
    const Seconds capped = std::min(asked, Seconds(longestPause));
    pauseUntil_ = clock_.monotonic() + duration_cast<nanoseconds>(capped);
}

}  // namespace tesserine
