#pragma once

#include "base/Instant.h"

#include <compare>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// Wall-clock fields in some zone. `month` and `day` from 1; `weekday` 1 = Sunday … 7 = Saturday.
struct LocalTime {
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    friend auto operator<=>(const LocalTime&, const LocalTime&) = default;
    /// `2026-03-11T10:00:00`
    std::string iso() const;
    /// Reads that form, seconds optional; impossible dates are none.
    static std::optional<LocalTime> parseISO(std::string_view text);
};

/// The Gregorian calendar in one time zone with one first day of the week. Immutable; cheap to
/// copy; safe from several threads.
class Calendar {
public:
    /// `zone` is an IANA name. `firstWeekday` 1 = Sunday … 7 = Saturday. Throws
    /// `std::invalid_argument` for a zone that does not exist.
    explicit Calendar(const std::string& zone, int firstWeekday = 1);
    /// Whether the time-zone database knows `zone`.
    static bool isZone(const std::string& zone);
    /// The zone this machine is set to.
    static std::string systemZone();

    const std::string& zone() const;
    int firstWeekday() const;

    LocalTime local(Instant instant) const;
    /// A time that a clock change skips moves forward by the gap; one that occurs twice is the
    /// first.
    Instant instant(const LocalTime& local) const;
    int weekday(Instant instant) const;
    Instant startOfDay(Instant instant) const;
    Instant startOfWeek(Instant instant) const;
    Instant startOfMonth(Instant instant) const;
    /// Calendar arithmetic on wall-clock fields: the time of day is kept, a day beyond the month's
    /// end is its last day.
    Instant addDays(Instant instant, int days) const;
    Instant addMonths(Instant instant, int months) const;
    Instant addYears(Instant instant, int years) const;
    bool isSameDay(Instant a, Instant b) const;
    /// Whole days from the day of `from` to the day of `to`, by the calendar.
    int daysBetween(Instant from, Instant to) const;
    /// "14 March 2026" in English.
    std::string longDate(Instant instant) const;

private:
    struct Zone;
    std::shared_ptr<const Zone> zone_;  // shared by copies; immutable
    int firstWeekday_;
};

/// Days in a month of the Gregorian calendar.
int daysInMonth(int year, int month);

}  // namespace tesserine
