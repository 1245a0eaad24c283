#pragma once

#include "search/QueryDates.h"
#include "search/QuerySyntax.h"
#include "search/SearchFilters.h"

#include <optional>

namespace tesserine {

/// The time that a value names for its field: `before:2025` ends where `created:2025` begins, and
/// `edited:7d` goes on until now. None when the value holds no date.
std::optional<filter::TimeSpan> timeOf(
    const QueryFilter& filter, const QueryValue& value, Instant now, const Calendar& calendar);

}  // namespace tesserine
