#include "base/Text.h"
#include "cli/LibrarySearch.h"
#include "cli/SearchPresentation.h"
#include "cli/SearchRun.h"
#include "cli/Session.h"
#include "cli/UsageError.h"
#include "search/RecentSearches.h"

#include <boost/json/object.hpp>

namespace tesserine::cli {

namespace {

ExitStatus suggest(Session& session, const std::string& typed) {
    const auto suggestions = session.search().suggest(typed);
    if (session.output().isJSON()) {
        session.output().json(suggestionsJSON(suggestions));
    } else {
        showSuggestions(session, suggestions);
    }
    return ExitStatus::done;
}

/// Recent searches are a help: a search does not fail because they cannot be kept.
void remember(Session& session, const std::string& query) {
    try {
        RecentSearches(session.preferences()).remember(query);
    } catch (const std::exception& error) {
        session.log().warning(std::string("A search was not remembered: ") + error.what());
    }
}

ExitStatus search(Session& session, const Arguments& arguments) {
    if (const auto typed = arguments.text("suggest")) return suggest(session, *typed);
    const std::string query = text::joined(arguments.wordsFrom(0), " ");
    const ExitStatus status = runSearch(session, query, arguments);
    const bool isByHand = !session.output().isJSON();
    if (isByHand) remember(session, query);
    return status;
}

}  // namespace

ExitStatus runSearch(Session& session, const std::string& query, const Arguments& arguments) {
    LibrarySearch& library = session.search();
    const auto limit = arguments.integer("limit", 1, SearchEngine::largestLimit);
    const SearchResponse response = library.search(
        {.text = query,
         .limit = limit.value_or(SearchEngine::defaultLimit),
         .effort = arguments.has("as-typed") ? SearchEngine::Effort::asTyped
                                             : SearchEngine::Effort::all});
    const std::string explanation = library.explanation(query);
    if (session.output().isJSON()) {
        session.output().json(responseJSON(response, explanation));
        return ExitStatus::done;
    }
    if (arguments.has("explain")) {
        session.output().line(markedLine(session, explanation));
        session.output().flush();  // before the remarks, which take another way
    }
    showResponse(session, response);
    return ExitStatus::done;
}

std::vector<Option> searchOptions() {
    return {
        {.name = "limit", .value = "N", .summary = "At most so many results (50 unless said)"},
        {.name = "explain", .summary = "Say first how the query was understood"},
        {.name = "as-typed", .summary = "Correct nothing and leave nothing out"}};
}

std::vector<Command> searchCommands() {
    std::vector<Option> options = searchOptions();
    options.push_back(
        {.name = "suggest", .value = "TEXT", .summary = "List what TEXT may go on with instead"});
    return {
        {.path = "search",
         .summary = "Finds notes and tasks",
         .arguments = {{.name = "QUERY", .isOptional = true, .isRepeatable = true}},
         .options = std::move(options),
         .details =
             "Words are joined by “and”. Further: \"a phrase\", -without, OR, (groups), begin*, "
             "*part*, tag:, notebook:, created:, before:, after:, edited:, is:, has:, type:, title:, "
             "body:, file:, due:, priority:, amount:, account:, near:, in:trash, sort:newest. "
             "Nothing typed is an error. A query that begins with a minus stands behind “--”.",
         .example = "tesserine search 'invoice tag:tax -draft'",
         .run = search}};
}

}  // namespace tesserine::cli
