#pragma once

#include "base/Calendar.h"

#include <optional>
#include <string_view>

namespace tesserine {

/// The instant that a date in an imported file names: `2026-03-14`, also with "/" between its
/// numbers; optionally a time after "T" or a space, with or without seconds and fraction;
/// optionally "Z", "UTC" or an offset such as "+01:00" or "-0530". Without a zone it is a time of
/// `calendar`. Anything else, days that do not exist and years before 1000 or after 2999 are none.
std::optional<Instant> sourceDate(std::string_view text, const Calendar& calendar);

/// The instant of a date such as `20260314T091500Z`, under the same limits.
std::optional<Instant> compactDate(std::string_view text);

}  // namespace tesserine
