#pragma once

#include "base/Instant.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <stop_token>

namespace tesserine {

/// Where the program learns what time it is. Nothing else reads the system's time.
class Clock {
public:
    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// The wall clock, rounded down to a whole millisecond: the wire keeps no more, and a finer
    /// stamp would make a record look newer than its own copy.
    virtual Instant now() const = 0;
    /// Time that never jumps, for measuring and waiting.
    virtual std::chrono::nanoseconds monotonic() const = 0;
    /// Waits for `duration` on the monotonic clock or until `stop`; tells whether the time was up.
    virtual bool sleep(std::chrono::nanoseconds duration, std::stop_token stop) const = 0;
};

/// The machine's own clock.
class SystemClock final : public Clock {
public:
    Instant now() const override;
    std::chrono::nanoseconds monotonic() const override;
    bool sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override;
};

/// A clock that stands at one instant (the terminal program's `--now`, and tests). Waiting on it
/// moves it forward at once. Safe from several threads.
class FixedClock final : public Clock {
public:
    explicit FixedClock(Instant now);
    Instant now() const override;
    std::chrono::nanoseconds monotonic() const override;
    bool sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override;

    void set(Instant now);
    void advance(Instant::Duration by);

private:
    mutable std::atomic<double> seconds_;
    mutable std::atomic<std::int64_t> monotonicNanoseconds_{0};
};

}  // namespace tesserine
