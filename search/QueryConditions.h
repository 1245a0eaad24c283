#pragma once

#include "base/Calendar.h"
#include "search/QuerySources.h"
#include "search/QuerySyntax.h"

#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// Turns the filters of a query into conditions on documents. Everything typed becomes a binding.
class QueryConditions {
public:
    /// `library` may be null: then what only it could answer is left out, and said.
    struct Setting {
        QueryVocabulary& vocabulary;
        QueryLibrary* library = nullptr;
        Instant now;
        const Calendar& calendar;
    };
    explicit QueryConditions(const Setting& setting) : setting_(setting) {}

    /// The condition of a `filter` node; none when it restricts nothing, or cannot be understood,
    /// which is then said in the hints.
    std::optional<BoundSQL> condition(const QueryNode& node);
    const std::vector<std::string>& hints() const { return hints_; }

private:
    using Condition = std::optional<BoundSQL>;
    Condition ofValue(const QueryFilter& filter, const QueryValue& value);
    Condition tag(const QueryFilter& filter, const QueryValue& value);
    Condition notebook(const QueryFilter& filter, const QueryValue& value) const;
    Condition has(const QueryValue& value);
    Condition is(const QueryValue& value);
    Condition due(const QueryFilter& filter, const QueryValue& value);
    Condition priority(const QueryFilter& filter, const QueryValue& value);
    Condition near(const QueryFilter& filter);
    Condition answered(const LibraryCondition& condition);

    std::optional<filter::TimeSpan> span(const QueryFilter& filter, const QueryValue& value) const;
    void hint(const std::string& sentence);

    Setting setting_;
    std::vector<std::string> hints_;
};

}  // namespace tesserine
