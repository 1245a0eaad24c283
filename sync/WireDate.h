#pragma once

#include "base/Instant.h"

#include <optional>
#include <string>
#include <string_view>

/// The one form of a date on the wire: `2025-03-01T10:00:00.123Z` (RFC 3339).
namespace tesserine::wire {

/// UTC with milliseconds.
std::string formatDate(Instant instant);
/// With `Z` or `±hh:mm`, and with a fraction of one to nine digits or without one; anything else is
/// none.
std::optional<Instant> parseDate(std::string_view text);

}  // namespace tesserine::wire
