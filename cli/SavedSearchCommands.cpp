#include "cli/CommandError.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/SearchRun.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

namespace tesserine::cli {

namespace {

ExitStatus addSearch(Session& session, const Arguments& arguments) {
    session.holdNames();
    StoreContext& context = session.context();
    const std::string name = arguments.word(0);
    const std::string query = arguments.word(1);
    const auto known = session.savedSearches().named(context, name);
    if (!known.empty() && !arguments.has("replace")) throw CommandError::savedSearchExists(name);

    CDSavedSearch* search = nullptr;
    if (known.empty()) {
        search = &session.savedSearches().create(context, name, query);
    } else {
        search = known.front();
        session.savedSearches().setQuery(*search, query);
    }
    context.save();
    return answerWithID(session, *search);
}

ExitStatus listSearches(Session& session, const Arguments&) {
    const auto searches = session.savedSearches().list(session.context());
    if (session.output().isJSON()) {
        boost::json::array array;
        for (CDSavedSearch* search : searches) {
            array.push_back(asJSON(*search, Detail::header));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    if (searches.empty()) session.remark("There are no saved searches.");
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "NAME", .style = Style::strong, .mayShrink = true},
            {.title = "QUERY", .mayShrink = true}}};
    for (const CDSavedSearch* search : searches) {
        table.rows.push_back(
            {shortID(search->id), search->name.valueOr(""), search->query.valueOr("")});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus renameSearch(Session& session, const Arguments& arguments) {
    CDSavedSearch& search = resolveSavedSearch(session, arguments.word(0));
    session.savedSearches().rename(search, arguments.word(1));
    session.context().save();
    return answer(session, search, "It is called " + inQuotes(search.name.valueOr("")) + ".");
}

ExitStatus changeQuery(Session& session, const Arguments& arguments) {
    CDSavedSearch& search = resolveSavedSearch(session, arguments.word(0));
    session.savedSearches().setQuery(search, arguments.word(1));
    session.context().save();
    return answer(session, search, "Changed " + inQuotes(search.name.valueOr("")) + ".");
}

ExitStatus deleteSearch(Session& session, const Arguments& arguments) {
    CDSavedSearch& search = resolveSavedSearch(session, arguments.word(0));
    const std::string name = inQuotes(search.name.valueOr(""));
    session.savedSearches().remove(session.context(), search);
    session.context().save();
    return answerCount(session, "deleted", 1, "Deleted " + name + ".");
}

ExitStatus reorderSearches(Session& session, const Arguments& arguments) {
    std::vector<CDSavedSearch*> order;
    for (const std::string& name : arguments.wordsFrom(0)) {
        order.push_back(&resolveSavedSearch(session, name));
    }
    session.savedSearches().reorder(order);
    session.context().save();
    return listSearches(session, arguments);
}

ExitStatus runSaved(Session& session, const Arguments& arguments) {
    const CDSavedSearch& search = resolveSavedSearch(session, arguments.word(0));
    return runSearch(session, search.query.valueOr(""), arguments);
}

}  // namespace

std::vector<Command> savedSearchCommands() {
    const Argument search{.name = "SEARCH"};
    return {
        {.path = "saved-search add",
         .summary = "Keeps a search under a name and prints its id",
         .access = Access::writes,
         .arguments = {{.name = "NAME"}, {.name = "QUERY"}},
         .options = {{.name = "replace", .summary = "Give a search of this name the new query"}},
         .example = "tesserine saved-search add Travel 'tag:travel is:pinned'",
         .run = addSearch},
        {.path = "saved-search list",
         .summary = "Lists the saved searches in their order",
         .example = "tesserine saved-search list",
         .run = listSearches},
        {.path = "saved-search rename",
         .summary = "Gives a saved search another name",
         .access = Access::writes,
         .arguments = {search, {.name = "NAME"}},
         .example = "tesserine saved-search rename Travel Journeys",
         .run = renameSearch},
        {.path = "saved-search query",
         .summary = "Gives a saved search another query",
         .access = Access::writes,
         .arguments = {search, {.name = "QUERY"}},
         .example = "tesserine saved-search query Journeys 'tag:travel'",
         .run = changeQuery},
        {.path = "saved-search delete",
         .summary = "Deletes a saved search",
         .access = Access::writes,
         .arguments = {search},
         .example = "tesserine saved-search delete Journeys",
         .run = deleteSearch},
        {.path = "saved-search reorder",
         .summary = "Puts saved searches into the order given",
         .access = Access::writes,
         .arguments = {{.name = "SEARCH", .isRepeatable = true}},
         .example = "tesserine saved-search reorder Journeys Recipes",
         .run = reorderSearches},
        {.path = "saved-search run",
         .summary = "Searches for what a saved search asks",
         .arguments = {search},
         .options = searchOptions(),
         .example = "tesserine saved-search run Journeys",
         .run = runSaved}};
}

}  // namespace tesserine::cli
