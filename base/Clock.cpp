#include "base/Clock.h"

#include <condition_variable>
#include <mutex>

namespace tesserine {

using std::chrono::nanoseconds;

Instant SystemClock::now() const {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Instant::fromMilliseconds(
        std::chrono::floor<std::chrono::milliseconds>(sinceEpoch).count());
}

nanoseconds SystemClock::monotonic() const {
    return std::chrono::duration_cast<nanoseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

bool SystemClock::sleep(nanoseconds duration, std::stop_token stop) const {
    std::mutex mutex;
    std::condition_variable_any wakened;
    std::unique_lock lock(mutex);
    const auto end = std::chrono::steady_clock::now() + duration;
    wakened.wait_until(lock, stop, end, [] { return false; });
    return std::chrono::steady_clock::now() >= end;
}

FixedClock::FixedClock(Instant now) : seconds_(now.seconds()) {}

Instant FixedClock::now() const { return Instant::fromSeconds(seconds_.load()); }

nanoseconds FixedClock::monotonic() const { return nanoseconds(monotonicNanoseconds_.load()); }

bool FixedClock::sleep(nanoseconds duration, std::stop_token stop) const {
    if (stop.stop_requested()) return false;
    monotonicNanoseconds_ += duration.count();
    seconds_.fetch_add(Instant::Duration(duration).count());
    return true;
}

void FixedClock::set(Instant now) { seconds_ = now.seconds(); }

void FixedClock::advance(Instant::Duration by) {
    seconds_.fetch_add(by.count());
    monotonicNanoseconds_ += std::chrono::duration_cast<nanoseconds>(by).count();
}

}  // namespace tesserine
