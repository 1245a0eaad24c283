#pragma once

#include "base/Instant.h"

#include <boost/json/fwd.hpp>

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tesserine {

class Calendar;

/// How a task repeats: every so many days, weeks, months or years.
///
/// A plain value without state of its own; a task keeps it as its storage text. Everything about
/// dates happens in the calendar that is handed in: its zone, and for weeks its first weekday.
struct RecurrenceRule {
    enum class Unit { day, week, month, year };

    /// What an editor of rules shows.
    struct EditorState {
        Unit unit = Unit::day;
        int interval = 1;
        std::set<int> weekdays{};
        std::optional<Instant> due{};  ///< the task's due date
    };

    Unit unit = Unit::day;
    int interval = 1;                  ///< every so many units; at least 1
    std::set<int> weekdays{};          ///< with `week`: 1 = Sunday … 7 = Saturday
    std::optional<int> dayOfMonth{};   ///< with `month` and `year`: 1 to 31
    std::optional<int> monthOfYear{};  ///< with `year`: 1 to 12

    friend bool operator==(const RecurrenceRule&, const RecurrenceRule&) = default;

    /// The rule an editor means: a day of the month, and for years the month, are those of the due
    /// date, and none without one. Weekdays are kept for weeks only; an interval below 1 is 1.
    static RecurrenceRule fromEditor(const EditorState& state, const Calendar& calendar);

    /// The text a library keeps, such as `unit=week;interval=2;weekdays=2,4`.
    std::string storageString() const;
    /// Reads that text. Spaces around keys and values and unknown keys are skipped, numbers out of
    /// range are as if they were not there, and so are weekdays of units other than weeks. None
    /// when no known unit is named.
    static std::optional<RecurrenceRule> fromStorageString(std::string_view text);

    /// The members `unit`, `interval`, `weekdays`, `dayOfMonth` and `monthOfYear`, in this order;
    /// null for what is absent.
    boost::json::object json() const;

    /// The rule in English, such as "Every 2 weeks on Mon, Thu".
    std::string description() const;

    /// The next occurrence, later than `after` and at its time of day. Without weekdays, or a day
    /// of the month, it falls on the one `after` has; a day beyond the month's end is its last day.
    /// A time that a clock change skips moves forward by the gap. None when the calendar ends, with
    /// the year 9999.
    std::optional<Instant> nextOccurrence(Instant after, const Calendar& calendar) const;

    /// Further occurrences that `catchUp` looks at before it gives up.
    static constexpr int maximumFurtherOccurrences = 500;
    /// The due date of a task that was due at `due` and is done `now`: the first occurrence later
    /// than `now`, or the last one looked at when there are too many. None when there is no next
    /// one.
    std::optional<Instant> catchUp(Instant due, Instant now, const Calendar& calendar) const;

    /// The first day that fits the rule, that of `from` included, at the time of day of `from`: one
    /// of the weekdays, or the day of the month (and year). A rule that names neither fits any day.
    Instant firstFittingDay(Instant from, const Calendar& calendar) const;
};

/// "day", "week", "month", "year"
constexpr std::string_view rawValue(RecurrenceRule::Unit unit) {
    switch (unit) {
    case RecurrenceRule::Unit::day: return "day";
    case RecurrenceRule::Unit::week: return "week";
    case RecurrenceRule::Unit::month: return "month";
    case RecurrenceRule::Unit::year: return "year";
    }
    return {};
}
/// The unit with that text; none for any other text.
std::optional<RecurrenceRule::Unit> recurrenceUnit(std::string_view text);

/// An English ordinal: "1st", "12th", "23rd".
std::string ordinal(int number);

}  // namespace tesserine
