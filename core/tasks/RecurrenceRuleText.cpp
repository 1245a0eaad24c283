#include "base/EnglishNames.h"
#include "base/Text.h"
#include "core/tasks/RecurrenceRule.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstdlib>

namespace tesserine {
namespace {

using Unit = RecurrenceRule::Unit;

constexpr std::array units = {Unit::day, Unit::week, Unit::month, Unit::year};

/// Calls `take` with each piece of `text` between separators.
template <class Take>
void forEachPiece(std::string_view text, char separator, Take take) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        take(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// The number a text consists of, when it lies in the range.
std::optional<int> number(std::string_view text, int least, int greatest) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || read != end) return std::nullopt;
    return value >= least && value <= greatest ? std::optional(value) : std::nullopt;
}

std::set<int> weekdayNumbers(std::string_view text) {
    std::set<int> weekdays;
    forEachPiece(text, ',', [&](std::string_view piece) {
        if (const auto weekday = number(text::trimmed(piece), 1, 7)) weekdays.insert(*weekday);
    });
    return weekdays;
}

/// `texts` of the weekdays in ascending order with `separator` between them.
template <class Text>
std::string joined(const std::set<int>& weekdays, std::string_view separator, Text textOf) {
    std::string list;
    for (const int weekday : weekdays) {
        if (!list.empty()) list += separator;
        list += textOf(weekday);
    }
    return list;
}

std::string shortName(int weekday) {
    return std::string(english::shortened(english::weekdayName(weekday)));
}

}  // namespace

std::optional<Unit> recurrenceUnit(std::string_view text) {
    const auto* const found =
        std::ranges::find(units, text, [](Unit unit) { return rawValue(unit); });
    return found == units.end() ? std::nullopt : std::optional(*found);
}

std::string RecurrenceRule::storageString() const {
    std::string text = "unit=" + std::string(rawValue(unit));
    text += ";interval=" + std::to_string(interval);
    if (!weekdays.empty()) {
        text += ";weekdays=" + joined(weekdays, ",", [](int day) { return std::to_string(day); });
    }
    if (dayOfMonth) text += ";dayOfMonth=" + std::to_string(*dayOfMonth);
    if (monthOfYear) text += ";monthOfYear=" + std::to_string(*monthOfYear);
    return text;
}

std::optional<RecurrenceRule> RecurrenceRule::fromStorageString(std::string_view text) {
    RecurrenceRule rule;
    std::optional<Unit> unit;
    forEachPiece(text, ';', [&](std::string_view pair) {
        const std::size_t middle = pair.find('=');
        if (middle == std::string_view::npos) return;
        const std::string_view key = text::trimmed(pair.substr(0, middle));
        const std::string_view value = text::trimmed(pair.substr(middle + 1));
        if (key == "unit") unit = recurrenceUnit(value);
        if (key == "interval") rule.interval = number(value, 1, INT_MAX).value_or(1);
        if (key == "weekdays") rule.weekdays = weekdayNumbers(value);
        if (key == "dayOfMonth") rule.dayOfMonth = number(value, 1, 31);
        if (key == "monthOfYear") rule.monthOfYear = number(value, 1, 12);
    });
    if (!unit) return std::nullopt;

    rule.unit = *unit;
    if (rule.unit != Unit::week) rule.weekdays.clear();
    return rule;
}

boost::json::object RecurrenceRule::json() const {
    const auto numberOrNull = [](std::optional<int> number) {
        return number ? boost::json::value(*number) : boost::json::value();
    };
    boost::json::object object;
    object["unit"] = boost::json::string(rawValue(unit));
    object["interval"] = interval;
    object["weekdays"] = boost::json::array(weekdays.begin(), weekdays.end());
    object["dayOfMonth"] = numberOrNull(dayOfMonth);
    object["monthOfYear"] = numberOrNull(monthOfYear);
    return object;
}

std::string RecurrenceRule::description() const {
    const std::string unitText(rawValue(unit));
    const std::string count = std::to_string(interval);
    if (!weekdays.empty()) {
        const bool isPlainWeek = unit == Unit::week && interval == 1;
        if (isPlainWeek && weekdays == std::set{2, 3, 4, 5, 6}) return "Every weekday";
        const std::string names = joined(weekdays, ", ", shortName);
        return interval == 1 ? "Every " + names : "Every " + count + " weeks on " + names;
    }
    if (interval != 1) return "Every " + count + " " + unitText + "s";
    if (unit == Unit::month && dayOfMonth) return "Every month on the " + ordinal(*dayOfMonth);
    return "Every " + unitText;
}

std::string ordinal(int number) {
    const int last = std::abs(number % 10);
    const int lastTwo = std::abs(number % 100);
    const bool isTeen = lastTwo >= 11 && lastTwo <= 13;
    const char* suffix = "th";
    if (!isTeen && last == 1) suffix = "st";
    if (!isTeen && last == 2) suffix = "nd";
    if (!isTeen && last == 3) suffix = "rd";
    return std::to_string(number) + suffix;
}

}  // namespace tesserine
