#pragma once

#include "search/QuerySyntax.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Where to look for what answers a question. Days as people write them in a search.
struct QuestionFilters {
    std::string notebook{};
    std::string after{};
    std::string before{};
};
/// The question with the filters behind it; for looking only, never sent.
std::string lookedFor(std::string_view question, const QuestionFilters& filters);

/// What a question asks the library for.
struct QuestionTerms {
    /// Folded words that carry the meaning, each once, in their order. Small words such as "what"
    /// and "the" are left out unless nothing else is there.
    std::vector<std::string> words;
    /// Notes that hold any of the words and pass the filters that the question names, such as
    /// `notebook:Work`.
    Query query;

    static QuestionTerms of(std::string_view question);
};

}  // namespace tesserine
