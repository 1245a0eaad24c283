#include "search/FilterWording.h"

#include "base/Text.h"
#include "search/QueryDates.h"
#include "search/QueryTimes.h"
#include "search/SearchStatement.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {

namespace {

using wording::listed;
using wording::strong;

std::string belonging(const QueryValue& value) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 5> clauses{{
        {"attachment", "with an attachment"},
        {"text", "with text in an attachment"},
        {"location", "with a place"},
        {"reminder", "with a reminder"},
        {"tag", "with a tag"},
    }};
    const std::string name = text::asciiLowercased(value.text);
    for (const auto& [known, clause] : clauses) {
        if (name == known) return std::string(clause);
    }
    return "with an attachment of type " + strong(value.text);
}

std::string priority(const QueryFilter& filter, const QueryValue& value) {
    static constexpr std::array<std::string_view, 6> signs{
        "", "", "at least ", "at most ", "above ", "below "};
    const std::string to = value.upTo ? " to " + *value.upTo : "";
    return std::string(signs[static_cast<std::size_t>(filter.comparison)])
           + strong(value.text + to);
}

std::string near(const QueryFilter& filter) {
    std::vector<std::string> parts;
    for (const QueryValue& value : filter.values) {
        parts.push_back(value.text);
    }
    const std::string distance = parts.size() == 3 ? parts[2] : "10km";
    parts.resize(std::min<std::size_t>(parts.size(), 2));
    const std::string place = parts.size() == 2 ? parts[0] + ", " + parts[1] : parts.front();
    return "written within " + strong(distance) + " of " + strong(place);
}

std::string ofValue(const QueryFilter& filter, const QueryValue& value) {
    const bool isNone = !value.isQuoted && text::asciiLowercased(value.text) == "none";
    const bool isExact = filter.comparison == QueryFilter::Comparison::equal;
    std::string shown = strong(std::string(value.stem()) + (value.isBeginning() ? "…" : ""));
    switch (filter.field) {
    case QueryField::tag:
        if (isNone) return "without tags";
        return (isExact ? "with just " : "with ") + strong("#" + value.text);
    case QueryField::notebook:
        if (isNone) return "in no notebook";
        return (isExact ? "directly in " : "in ") + shown;
    case QueryField::type: return "with an attachment of type " + shown;
    case QueryField::has: return belonging(value);
    case QueryField::is: return "that are " + shown;
    case QueryField::title: return "with " + shown + " in the title";
    case QueryField::body: return "with " + shown + " in the text";
    case QueryField::file: return "with a file named " + shown;
    case QueryField::priority: return "of priority " + priority(filter, value);
    case QueryField::amount: return "with the amount " + shown;
    case QueryField::account: return "with the account number " + shown;
    case QueryField::scope: return value.text == "trash" ? "in the trash" : "anywhere";
    case QueryField::before:
    case QueryField::after:
    case QueryField::created:
    case QueryField::edited:
    case QueryField::due:
    case QueryField::near:
    case QueryField::sort: break;  // not said value by value
    }
    return shown;
}

}  // namespace

std::optional<std::string> FilterWording::clause(const QueryFilter& filter) const {
    if (filter.field == QueryField::edited) return timed("edited", filter);
    if (filter.field == QueryField::due) return timed("due", filter);
    if (filter.field == QueryField::near) return near(filter);
    static constexpr std::array writing{QueryField::before, QueryField::after, QueryField::created};
    const bool isWriting = std::ranges::find(writing, filter.field) != writing.end();
    if (isWriting) return timed("written", filter);
    std::vector<std::string> values;
    values.reserve(filter.values.size());
    for (const QueryValue& value : filter.values) {
        values.push_back(ofValue(filter, value));
    }
    return listed(values, "or");
}

std::optional<std::string> FilterWording::timed(
    std::string_view verb, const QueryFilter& filter) const {
    std::vector<std::string> times;
    for (const QueryValue& value : filter.values) {
        const std::string text = text::asciiLowercased(value.text);
        if (filter.field == QueryField::due && (text == "none" || text == "any")) {
            times.emplace_back(text == "none" ? "never" : "some day");
        } else if (const auto time = timeOf(filter, value, now_, calendar_)) {
            times.push_back(span(*time, value));
        }
    }
    if (times.empty()) return std::nullopt;
    return std::string(verb) + " " + listed(times, "or");
}

/// "in 2025", "on 1 March", "since 1 March", "before 2 January 2025", "from … to …".
std::string FilterWording::span(const filter::TimeSpan& time, const QueryValue& value) const {
    if (!time.begin) return "before " + strong(day(*time.end));
    if (!time.end) return "since " + strong(day(*time.begin));
    const auto date = parseQueryDate(value.text, now_, calendar_);
    const LocalTime begin = calendar_.local(*time.begin);
    if (!value.upTo && date->scope == DateScope::year) {
        return "in " + strong(std::to_string(begin.year));
    }
    if (!value.upTo && date->scope == DateScope::month) {
        const std::string longDate = calendar_.longDate(*time.begin);
        return "in " + strong(longDate.substr(longDate.find(' ') + 1));
    }
    const Instant last = calendar_.addDays(*time.end, -1);
    if (calendar_.isSameDay(*time.begin, last)) return "on " + strong(day(last));
    return "from " + strong(day(*time.begin)) + " to " + strong(day(last));
}

/// Without the year when it is this one.
std::string FilterWording::day(Instant instant) const {
    std::string text = calendar_.longDate(instant);
    const bool isThisYear = calendar_.local(instant).year == calendar_.local(now_).year;
    if (isThisYear) text.resize(text.rfind(' '));
    return text;
}

std::string wording::strong(std::string_view text) {
    return std::string(marker::open) + std::string(text) + std::string(marker::close);
}

std::string wording::listed(const std::vector<std::string>& items, std::string_view last) {
    std::string list;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) list += i + 1 == items.size() ? " " + std::string(last) + " " : ", ";
        list += items[i];
    }
    return list;
}

}  // namespace tesserine
