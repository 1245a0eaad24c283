#pragma once

#include "base/Calendar.h"
#include "base/Instant.h"
#include "search/QuerySyntax.h"
#include "search/SearchFilters.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Says in a few words what a filter keeps: "in Work", "edited since 1 March".
/// `marker::open` and `marker::close` stand around what was typed.
class FilterWording {
public:
    /// `calendar` outlives it.
    FilterWording(Instant now, const Calendar& calendar) : now_(now), calendar_(calendar) {}

    /// None for a filter that says nothing that could be understood.
    std::optional<std::string> clause(const QueryFilter& filter) const;

private:
    std::optional<std::string> timed(std::string_view verb, const QueryFilter& filter) const;
    std::string span(const filter::TimeSpan& time, const QueryValue& value) const;
    std::string day(Instant instant) const;

    Instant now_;
    const Calendar& calendar_;
};

namespace wording {

/// Between the markers.
std::string strong(std::string_view text);
/// "a", "a or b", "a, b or c".
std::string listed(const std::vector<std::string>& items, std::string_view last);

}  // namespace wording

}  // namespace tesserine
