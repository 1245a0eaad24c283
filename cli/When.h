#pragma once

#include "base/Calendar.h"

#include <string>

namespace tesserine::cli {

/// A moment as people type it: an ISO 8601 instant, or "2026-03-14 09:15" (also with a T and with
/// seconds) in the calendar's zone. Throws `UsageError`.
Instant parseWhen(const std::string& typed, const Calendar& calendar);

}  // namespace tesserine::cli
