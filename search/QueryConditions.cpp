#include "search/QueryConditions.h"

#include "base/Text.h"
#include "search/MatchExpression.h"
#include "search/QueryTimes.h"
#include "search/SearchIndex.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <string_view>
#include <utility>

namespace tesserine {

namespace {

using Comparison = QueryFilter::Comparison;

bool isNone(const QueryValue& value) {
    return !value.isQuoted && text::asciiLowercased(value.text) == "none";
}

/// A pattern of LIKE for a folded name; an asterisk at the end of a bare one stands for any rest.
std::string pattern(const QueryValue& value) {
    return filter::likeLiteral(indexFold(value.stem())) + (value.isBeginning() ? "%" : "");
}

std::optional<double> numberIn(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

/// "10km", "5mi", "800m" in kilometres.
std::optional<double> distanceIn(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, double>, 3> units{
        {{"km", 1}, {"mi", 1.609344}, {"m", 0.001}}};
    for (const auto& [unit, kilometres] : units) {
        if (!text.ends_with(unit)) continue;
        const auto count = numberIn(text.substr(0, text.size() - unit.size()));
        if (!count || *count < 0) return std::nullopt;
        return *count * kilometres;
    }
    return std::nullopt;
}

/// The box around everything within `kilometres` of a place, on a sphere.
filter::MapBox boxAround(double latitude, double longitude, double kilometres) {
    constexpr double earthRadius = 6'371;
    constexpr double degree = std::numbers::pi / 180;
    const double angle = std::min(kilometres / earthRadius, std::numbers::pi);
    const double height = angle / degree;
    filter::MapBox box{
        .south = latitude - height, .north = latitude + height, .west = -180, .east = 180};
    const double ratio = std::sin(angle) / std::cos(latitude * degree);
    const bool hasPole = box.south <= -90 || box.north >= 90;
    if (hasPole || ratio >= 1) return box;
    const double width = std::asin(ratio) / degree;
    box.west = longitude - width;
    box.east = longitude + width;
    return box;
}

/// 1 for "1" and "p1".
std::optional<int> priorityIn(std::string_view text) {
    if (text.starts_with('p') || text.starts_with('P')) text.remove_prefix(1);
    if (text.size() != 1 || text[0] < '1' || text[0] > '4') return std::nullopt;
    return text[0] - '0';
}

}  // namespace

std::optional<BoundSQL> QueryConditions::condition(const QueryNode& node) {
    const QueryFilter& filter = node.filter;
    if (filter.field == QueryField::sort) return std::nullopt;
    if (filter.field == QueryField::near) {
        auto box = near(filter);
        if (!box) hint("“" + node.typed + "” is no place, so it was left out.");
        return box;
    }
    std::vector<BoundSQL> any;
    for (const QueryValue& value : filter.values) {
        if (auto condition = ofValue(filter, value)) any.push_back(std::move(*condition));
    }
    if (any.empty()) return std::nullopt;
    return filter::anyOf(any);
}

std::optional<BoundSQL> QueryConditions::ofValue(
    const QueryFilter& filter, const QueryValue& value) {
    switch (filter.field) {
    case QueryField::tag: return tag(filter, value);
    case QueryField::notebook: return notebook(filter, value);
    case QueryField::type: return filter::hasType(indexFold(value.text));
    case QueryField::has: return has(value);
    case QueryField::is: return is(value);
    case QueryField::file:
        return filter::attachmentMatching(match::in("filename", match::value(value)));
    case QueryField::due: return due(filter, value);
    case QueryField::priority: return priority(filter, value);
    case QueryField::scope:
        if (value.text == "trash") return filter::isTrashed(true);
        return std::nullopt;
    case QueryField::before:
    case QueryField::after:
    case QueryField::created:
        if (const auto found = span(filter, value)) return filter::created(*found);
        break;
    case QueryField::edited:
        if (const auto found = span(filter, value)) return filter::updated(*found);
        break;
    case QueryField::sort:
    case QueryField::near:
    case QueryField::title:
    case QueryField::body:
    case QueryField::amount:
    case QueryField::account: return std::nullopt;  // no conditions of one value
    }
    hint("“" + value.text + "” is no date, so it was left out.");
    return std::nullopt;
}

std::optional<BoundSQL> QueryConditions::tag(const QueryFilter& filter, const QueryValue& value) {
    if (isNone(value)) return filter::carriesNoTag();
    std::vector<BoundSQL> any{filter::carriesTag(pattern(value))};
    if (filter.comparison == Comparison::equal) return any.front();
    for (const std::string& below : setting_.vocabulary.tagsBelow(value.text)) {
        any.push_back(filter::carriesTag(filter::likeLiteral(indexFold(below))));
    }
    return filter::anyOf(any);
}

std::optional<BoundSQL> QueryConditions::notebook(
    const QueryFilter& filter, const QueryValue& value) const {
    if (isNone(value)) return filter::inNotebook("");
    QueryLibrary::Notebooks found;
    if (setting_.library != nullptr) {
        const bool isExact = filter.comparison == Comparison::equal;
        found = setting_.library->notebooks(
            value.text, isExact ? QueryLibrary::Depth::itself : QueryLibrary::Depth::descendants);
    }
    if (found.notes) return filter::isOneOf(*found.notes);
    if (found.names.empty()) return filter::inNotebook(pattern(value));
    std::vector<BoundSQL> any;
    for (const std::string& name : found.names) {
        any.push_back(filter::inNotebook(filter::likeLiteral(indexFold(name))));
    }
    return filter::anyOf(any);
}

std::optional<BoundSQL> QueryConditions::has(const QueryValue& value) {
    const std::string what = text::asciiLowercased(value.text);
    if (what == "attachment" || what == "attachments" || what == "file") {
        return filter::hasAttachment();
    }
    if (what == "text") return filter::hasAttachmentText();
    if (what == "location") return filter::hasLocation();
    if (what == "tag" || what == "tags") return filter::negation(filter::carriesNoTag());
    if (what == "reminder") return answered({.kind = LibraryCondition::Kind::hasReminder});
    return filter::hasType(indexFold(value.text));
}

std::optional<BoundSQL> QueryConditions::is(const QueryValue& value) {
    using Kind = LibraryCondition::Kind;
    const std::string what = text::asciiLowercased(value.text);
    if (what == "favorite" || what == "favourite" || what == "pinned") {
        return filter::isFavorite(true);
    }
    if (what == "note") return filter::isKind(SearchKind::note);
    if (what == "task") return filter::isKind(SearchKind::task);
    if (what == "trashed") return filter::isTrashed(true);
    static constexpr std::array<std::pair<std::string_view, Kind>, 6> answers{{
        {"open", Kind::isOpen},
        {"done", Kind::isDone},
        {"overdue", Kind::isOverdue},
        {"locked", Kind::isLocked},
        {"conflict", Kind::hasConflict},
        {"template", Kind::isTemplate},
    }};
    if (what == "template") hint("Templates are in no search; they have a list of their own.");
    for (const auto& [name, kind] : answers) {
        if (what == name) return answered({.kind = kind});
    }
    hint("“is:” knows nothing called “" + value.text + "”, so it was left out.");
    return std::nullopt;
}

std::optional<BoundSQL> QueryConditions::due(const QueryFilter& filter, const QueryValue& value) {
    using Kind = LibraryCondition::Kind;
    if (isNone(value)) return answered({.kind = Kind::isNeverDue});
    if (text::asciiLowercased(value.text) == "any") return answered({.kind = Kind::isDue});
    const auto found = span(filter, value);
    if (found) return answered({.kind = Kind::isDue, .due = *found});
    hint("“" + value.text + "” is no date, so it was left out.");
    return std::nullopt;
}

std::optional<BoundSQL> QueryConditions::priority(
    const QueryFilter& filter, const QueryValue& value) {
    const auto from = priorityIn(value.text);
    const auto to = value.upTo ? priorityIn(*value.upTo) : from;
    if (!from || !to) {
        hint("“" + value.text + "” is no priority from 1 to 4, so it was left out.");
        return std::nullopt;
    }
    LibraryCondition condition{
        .kind = LibraryCondition::Kind::hasPriority,
        .mostUrgent = std::min(*from, *to),
        .leastUrgent = std::max(*from, *to)};
    switch (filter.comparison) {
    case Comparison::atLeast: condition.leastUrgent = 4; break;
    case Comparison::above:
        condition.mostUrgent = *from + 1;
        condition.leastUrgent = 4;
        break;
    case Comparison::atMost: condition.mostUrgent = 1; break;
    case Comparison::below:
        condition.mostUrgent = 1;
        condition.leastUrgent = *from - 1;
        break;
    case Comparison::none:
    case Comparison::equal: break;
    }
    return answered(condition);
}

/// `near:latitude,longitude,10km`
std::optional<BoundSQL> QueryConditions::near(const QueryFilter& filter) {
    if (filter.values.size() < 2 || filter.values.size() > 3) return std::nullopt;
    const auto latitude = numberIn(filter.values[0].text);
    const auto longitude = numberIn(filter.values[1].text);
    const auto distance =
        filter.values.size() == 3 ? distanceIn(filter.values[2].text) : std::optional(10.0);
    const bool isPlace = latitude && longitude && distance && std::abs(*latitude) <= 90
                         && std::abs(*longitude) <= 180;
    if (!isPlace) return std::nullopt;
    return filter::insideBox(boxAround(*latitude, *longitude, *distance));
}

std::optional<BoundSQL> QueryConditions::answered(const LibraryCondition& condition) {
    if (setting_.library != nullptr) {
        return filter::isOneOf(setting_.library->documents(condition));
    }
    hint("Reminders, templates, locked notes and tasks' states cannot be looked up here.");
    return std::nullopt;
}

std::optional<filter::TimeSpan> QueryConditions::span(
    const QueryFilter& filter, const QueryValue& value) const {
    return timeOf(filter, value, setting_.now, setting_.calendar);
}

void QueryConditions::hint(const std::string& sentence) {
    if (std::ranges::find(hints_, sentence) == hints_.end()) hints_.push_back(sentence);
}

}  // namespace tesserine
