#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// A point in time: seconds since 1970-01-01 00:00 UTC. The one type for "when" in the whole
/// program.
///
/// This is the only place that knows the four outside forms: seconds since 1970, the library's
/// seconds since 2001, whole milliseconds, and ISO 8601 text in UTC.
class Instant {
public:
    using Duration = std::chrono::duration<double>;

    /// Seconds from 1970-01-01 to 2001-01-01, the zero of instants in the library file.
    static constexpr double referenceOffset = 978'307'200.0;

    constexpr Instant() = default;
    static constexpr Instant fromSeconds(double since1970) { return Instant(since1970); }
    static constexpr Instant fromReferenceSeconds(double since2001) {
        return Instant(since2001 + referenceOffset);
    }
    static Instant fromMilliseconds(std::int64_t since1970);

    /// Reads ISO 8601: `2026-03-14T09:15:00Z`, with an optional fraction and `Z` or `±hh:mm`.
    /// Impossible dates (30 February) are none.
    static std::optional<Instant> parseISO(std::string_view text);

    constexpr double seconds() const { return seconds_; }
    constexpr double referenceSeconds() const { return seconds_ - referenceOffset; }
    /// Nearest whole millisecond.
    std::int64_t milliseconds() const;
    /// `2026-03-14T09:15:00.000Z`: UTC with milliseconds, proleptic Gregorian calendar. Instants
    /// outside the years 0000 to 9999 are clamped to them.
    std::string iso() const;
    /// The same instant rounded down to a whole millisecond, as every stamp in the library is.
    Instant floorToMillisecond() const;

    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the comparison for a pointer.
    friend constexpr auto operator<=>(const Instant&, const Instant&) = default;
    friend constexpr Duration operator-(Instant a, Instant b) {
        return Duration(a.seconds_ - b.seconds_);
    }
    friend constexpr Instant operator+(Instant a, Duration b) {
        return Instant(a.seconds_ + b.count());
    }
    friend constexpr Instant operator-(Instant a, Duration b) {
        return Instant(a.seconds_ - b.count());
    }

private:
    explicit constexpr Instant(double seconds) : seconds_(seconds) {}

    double seconds_ = 0;
};

}  // namespace tesserine
