#pragma once

#include "search/SearchCoordinator.h"
#include "search/SearchEngine.h"
#include "search/SearchSuggestions.h"
#include "search/StoreQueryLibrary.h"

#include <optional>
#include <string>
#include <vector>

namespace tesserine::cli {

class Session;

/// The search of the session's library: its index is brought up to date before it is asked.
///
/// Throws `SQLiteDatabase::Error` while the index cannot be opened, and `Interrupted` after Ctrl-C.
class LibrarySearch {
public:
    explicit LibrarySearch(Session& session);

    SearchCoordinator& coordinator() { return coordinator_; }
    SearchResponse search(const SearchEngine::Request& request);
    /// The engine itself, for who has questions of another kind; its index is up to date.
    SearchEngine& readyEngine();
    std::vector<SearchSuggestion> suggest(const std::string& typed);
    /// What the query says, with markers around what was typed.
    std::string explanation(const std::string& query) const;

private:
    bool catchUp();
    SearchResponse answer(const SearchEngine::Request& request);
    SearchEngine& engine();

    Session& session_;
    SearchCoordinator coordinator_;
    StoreQueryLibrary library_;
    SearchSynonyms synonyms_;
    std::optional<SearchEngine> engine_;  // made once the index is open
};

}  // namespace tesserine::cli
