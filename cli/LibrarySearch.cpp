#include "cli/LibrarySearch.h"

#include "base/Text.h"
#include "cli/IndexWork.h"
#include "cli/Session.h"
#include "search/QueryExplanation.h"
#include "search/QueryParser.h"
#include "search/RecentSearches.h"

namespace tesserine::cli {

LibrarySearch::LibrarySearch(Session& session)
    : session_(session),
      coordinator_(session.store(), {.clock = session.clock(), .log = session.log()}),
      library_(session.context(), session.clock(), session.calendar()),
      synonyms_(SearchSynonyms::load(session.preferences())) {}

SearchResponse LibrarySearch::search(const SearchEngine::Request& request) {
    catchUp();
    try {
        return engine().search(request);
    } catch (const SQLiteDatabase::Error& error) {
        if (!error.isDamage()) throw;
        session_.log().warning(std::string("search: ") + error.what());
    }
    IndexWork work(session_, "Rebuilding the search index");
    work.finish(coordinator_.rebuild(work));
    return engine().search(request);
}

SearchEngine& LibrarySearch::readyEngine() {
    catchUp();
    return engine();
}

std::vector<SearchSuggestion> LibrarySearch::suggest(const std::string& typed) {
    catchUp();
    const auto recent = RecentSearches(session_.preferences()).all();
    return SearchSuggestions(coordinator_.index()).suggest(typed, recent);
}

std::string LibrarySearch::explanation(const std::string& query) const {
    return QueryExplanation{session_.now(), session_.calendar(), synonyms_}.sentence(
        parseQuery(text::sanitized(query)));
}

void LibrarySearch::catchUp() {
    IndexWork work(session_, "Indexing");
    try {
        work.finish(coordinator_.catchUp(work));
    } catch (const SQLiteDatabase::Error& error) {
        // A full disk, for instance: what is indexed can still be searched.
        if (!coordinator_.isOn()) throw;
        session_.remark(error.what());
        session_.log().warning(std::string("search index: ") + error.what());
    }
}

SearchEngine& LibrarySearch::engine() {
    if (!engine_) {
        engine_.emplace(SearchEngine::Setting{
            .index = coordinator_.index(),
            .library = &library_,
            .clock = session_.clock(),
            .calendar = session_.calendar(),
            .synonyms = synonyms_});
    }
    return *engine_;
}

}  // namespace tesserine::cli
