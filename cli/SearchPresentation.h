#pragma once

#include "search/SearchResponse.h"
#include "search/SearchSuggestions.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <string>
#include <string_view>
#include <vector>

/// How searches answer.
namespace tesserine::cli {

class Session;

/// Every field of the response under its own name; `explanation` with "**" around what was typed.
boost::json::object responseJSON(const SearchResponse& response, std::string_view explanation);
boost::json::array suggestionsJSON(const std::vector<SearchSuggestion>& suggestions);

/// What was done to find something, then the results with the matched words standing out.
void showResponse(Session& session, const SearchResponse& response);
void showSuggestions(Session& session, const std::vector<SearchSuggestion>& suggestions);

/// A text with markers as one harmless line, what is marked standing out on a terminal.
std::string markedLine(Session& session, std::string_view text);

}  // namespace tesserine::cli
