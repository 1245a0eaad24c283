#include "search/QueryTimes.h"

namespace tesserine {

namespace {

using Comparison = QueryFilter::Comparison;

/// What is compared starts, or ends, where the other one does.
filter::TimeSpan compared(const DateSpan& span, Comparison comparison) {
    switch (comparison) {
    case Comparison::atLeast: return {.begin = span.begin};
    case Comparison::above: return {.begin = span.end};
    case Comparison::atMost: return {.end = span.end};
    case Comparison::below: return {.end = span.begin};
    case Comparison::none:
    case Comparison::equal: break;
    }
    return {.begin = span.begin, .end = span.end};
}

/// `a..b`, either of which may be missing.
std::optional<filter::TimeSpan> rangeOf(
    const QueryValue& value, Instant now, const Calendar& calendar) {
    const auto from = parseQueryDate(value.text, now, calendar);
    const auto to = parseQueryDate(*value.upTo, now, calendar);
    const bool isReadable = (from || value.text.empty()) && (to || value.upTo->empty());
    if (!isReadable || (!from && !to)) return std::nullopt;
    filter::TimeSpan span;
    if (from) span.begin = from->begin;
    if (to) span.end = to->end;
    return span;
}

}  // namespace

std::optional<filter::TimeSpan> timeOf(
    const QueryFilter& filter, const QueryValue& value, Instant now, const Calendar& calendar) {
    if (value.upTo) return rangeOf(value, now, calendar);
    const auto date = parseQueryDate(value.text, now, calendar);
    if (!date) return std::nullopt;
    if (filter.field == QueryField::before) return compared(*date, Comparison::below);
    if (filter.field == QueryField::after) return compared(*date, Comparison::above);
    const bool reachesOn =
        filter.field == QueryField::edited || (filter.field == QueryField::created && date->isAge);
    const bool isBare = filter.comparison == Comparison::none;
    return compared(*date, isBare && reachesOn ? Comparison::atLeast : filter.comparison);
}

}  // namespace tesserine
