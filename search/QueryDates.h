#pragma once

#include "base/Calendar.h"
#include "base/Instant.h"

#include <optional>
#include <string_view>

namespace tesserine {

/// How long a time a date in a query names. A week is no scope of its own but seven days.
enum class DateScope { year, month, day };

/// The time that a date names: from `begin` on, before `end`, whole days of the local calendar.
struct DateSpan {
    Instant begin;
    Instant end;
    DateScope scope = DateScope::day;
    /// Of `7d` and the like: counted back from today, so that "within" it reaches until now.
    bool isAge = false;
};

/// Reads 2025, 2025-01, 2025-01-15, 1/15/2025, jan 2025, today, yesterday, tomorrow, week, month,
/// year, "last week", "next month", 7d 3w 2m 1y and day-7, ignoring case; `now` is today. None for
/// anything else and for dates that do not exist.
std::optional<DateSpan> parseQueryDate(
    std::string_view text, Instant now, const Calendar& calendar);

}  // namespace tesserine
