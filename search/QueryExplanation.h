#pragma once

#include "base/Calendar.h"
#include "base/Instant.h"
#include "search/QuerySyntax.h"
#include "search/SearchSynonyms.h"

#include <string>

namespace tesserine {

/// One sentence that says what a query was understood to ask for, such as "Notes and tasks in Work
/// with #tax, edited since 1 March, containing invoice (and bill, your synonym)."
/// `marker::open` and `marker::close` stand around what was typed.
struct QueryExplanation {
    Instant now;
    const Calendar& calendar;
    const SearchSynonyms& synonyms;

    std::string sentence(const Query& query) const;
};

}  // namespace tesserine
