#include "cli/LibrarySearch.h"

#include "base/FailPoint.h"
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
    const bool isWhole = catchUp();
    FAIL_POINT("search.caughtUp");
    SearchResponse response = answer(request);
    // Another program may have emptied the index since, to fill it again.
    if (isWhole && coordinator_.isRebuildUnfinished()) IndexWork::tellOfAnothersRebuild(session_);
    return response;
}

SearchResponse LibrarySearch::answer(const SearchEngine::Request& request) {
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

/// Tells whether the index is whole then; if not, people were told.
bool LibrarySearch::catchUp() {
    IndexWork work(session_, "Indexing");
    try {
        const auto outcome = coordinator_.catchUp(work);
        work.finish(outcome);
        return outcome == SearchCoordinator::Outcome::complete;
    } catch (const SQLiteDatabase::Error& error) {
        // A full disk, for instance: what is indexed can still be searched.
        if (!coordinator_.isOn()) throw;
        session_.remark(error.what());
        session_.log().warning(std::string("search index: ") + error.what());
        return false;
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
