#include "tools/inspect/DateInputs.h"

#include <boost/json/array.hpp>

#include <climits>
#include <set>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

[[noreturn]] void noSuch(std::string_view key, std::string_view what) {
    throw InputError("“" + std::string(key) + "” is no " + std::string(what));
}

std::optional<int> optionalNumber(
    const object& input, std::string_view key, int least, int greatest) {
    const auto number = optionalInteger(input, key);
    if (!number) return std::nullopt;
    if (*number < least || *number > greatest) noSuch(key, "number in its range");
    return static_cast<int>(*number);
}

std::set<int> weekdays(const object& input) {
    std::set<int> numbers;
    const value* const given = input.if_contains("weekdays");
    if (given == nullptr || given->is_null()) return numbers;
    for (const value& number : elements(input, "weekdays")) {
        const bool isWeekday =
            number.is_int64() && number.get_int64() >= 1 && number.get_int64() <= 7;
        if (!isWeekday) noSuch("weekdays", "list of weekdays");
        numbers.insert(static_cast<int>(number.get_int64()));
    }
    return numbers;
}

}  // namespace

Instant instant(const object& input, std::string_view key) {
    const auto read = Instant::parseISO(text(input, key));
    if (!read) noSuch(key, "instant");
    return *read;
}

std::optional<Instant> optionalInstant(const object& input, std::string_view key) {
    return optionalText(input, key) ? std::optional(instant(input, key)) : std::nullopt;
}

Calendar calendarOf(const object& input) {
    const std::string zone = text(input, "tz");
    if (!Calendar::isZone(zone)) noSuch("tz", "time zone");
    return Calendar(zone, optionalNumber(input, "firstWeekday", 1, 7).value_or(1));
}

RecurrenceRule recurrenceRule(const object& rule) {
    const auto unit = recurrenceUnit(text(rule, "unit"));
    if (!unit) noSuch("unit", "unit of time");

    RecurrenceRule read{.unit = *unit};
    read.interval = optionalNumber(rule, "interval", INT_MIN, INT_MAX).value_or(1);
    read.weekdays = weekdays(rule);
    read.dayOfMonth = optionalNumber(rule, "dayOfMonth", 1, 31);
    read.monthOfYear = optionalNumber(rule, "monthOfYear", 1, 12);
    return read;
}

std::string shortISO(Instant instant) {
    constexpr std::string_view noFraction = ".000Z";
    std::string text = instant.iso();
    if (text.ends_with(noFraction)) text.replace(text.size() - noFraction.size(), text.npos, "Z");
    return text;
}

}  // namespace tesserine::inspect
