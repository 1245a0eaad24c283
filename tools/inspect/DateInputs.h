#pragma once

#include "base/Calendar.h"
#include "core/tasks/RecurrenceRule.h"
#include "tools/inspect/Operations.h"

#include <string>

/// Members of an input that tell of dates, and how dates are written in outputs.
namespace tesserine::inspect {

/// The instant a text names. Throws `InputError`.
Instant instant(const boost::json::object& input, std::string_view key);
std::optional<Instant> optionalInstant(const boost::json::object& input, std::string_view key);
/// The calendar of `tz` and `firstWeekday` (1 when absent). Throws `InputError`.
Calendar calendarOf(const boost::json::object& input);
/// The rule {unit, interval, weekdays, dayOfMonth, monthOfYear}, as it stands. Throws `InputError`.
RecurrenceRule recurrenceRule(const boost::json::object& rule);
/// `2026-03-11T10:00:00Z`, with milliseconds only where there are some.
std::string shortISO(Instant instant);

}  // namespace tesserine::inspect
