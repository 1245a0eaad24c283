#include "sync/SyncSchedule.h"

#include <algorithm>

namespace tesserine {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;

bool SyncSchedule::isDue(std::int64_t transaction) {
    const nanoseconds now = clock_.monotonic();
    if (transaction != known_) {
        known_ = transaction;
        hasChange_ = true;
        const nanoseconds rested = lastSent_ ? *lastSent_ + afterChange : now;
        next_ = std::min(next_, std::max(now, rested));
    }
    const bool isPaused = pauseUntil_ && now < *pauseUntil_;
    return !isPaused && now >= next_;
}

nanoseconds SyncSchedule::untilDue() const {
    const nanoseconds due = std::max(next_, pauseUntil_.value_or(next_));
    return std::max(due - clock_.monotonic(), nanoseconds(0));
}

void SyncSchedule::tryAgain() {
    endOwnPause();
    wake();
}

void SyncSchedule::endOwnPause() {
    if (!isPauseAsked_) pauseUntil_.reset();
}

void SyncSchedule::hear(const LiveNews& news, std::int64_t cursor) {
    switch (news.kind) {
    case LiveNews::Kind::changes:
        if (news.seq > cursor) wake();
        return;
    case LiveNews::Kind::signedOut: return wake();
    case LiveNews::Kind::opened:  // the server is there again, and some may have been missed
        endOwnPause();
        [[fallthrough]];
    case LiveNews::Kind::unknown:
        next_ = std::min<nanoseconds>(next_, clock_.monotonic() + afterChange);
        return;
    case LiveNews::Kind::closed: return;
    }
}

void SyncSchedule::succeeded(std::int64_t transaction) {
    known_ = transaction;
    const nanoseconds now = clock_.monotonic();
    if (hasChange_) lastSent_ = now;
    hasChange_ = false;
    next_ = now + interval_;
    pauseUntil_.reset();
    pause_ = Seconds(0);
}

void SyncSchedule::failed(const SyncError& error) {
    const Seconds longer = pause_.count() == 0 ? Seconds(firstPause) : pause_ * 2;
    pause_ = std::min(longer, Seconds(longestPause));
    isPauseAsked_ = error.problem().retryAfter.has_value();
    const Seconds asked = error.problem().retryAfter.value_or(pause_);
    const Seconds capped = std::min(asked, Seconds(longestPause));
    pauseUntil_ = clock_.monotonic() + duration_cast<nanoseconds>(capped);
}

}  // namespace tesserine
