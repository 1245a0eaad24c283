#pragma once

#include "search/SearchIndex.h"
#include "search/SearchResponse.h"
#include "search/SearchStatement.h"

#include <cstdint>
#include <string>
#include <vector>

/// Runs statements of a search on the index and reads their rows. To be called on the index's
/// queue; throws `SQLiteDatabase::Error`.
namespace tesserine {

/// The results of `search`, without their attachments; snippets are those of the body.
std::vector<SearchResult> readResults(SearchIndex& index, const Search& search, Instant now);

/// When nothing matched in the body, its beginning says nothing: the snippet becomes that of the
/// files, tags or notebook that did match.
void showWhatMatched(SearchResult& result);

/// Marks `parts` in the titles and in an excerpt of the text of each of `results`, which were found
/// by them and not by the words of the index.
void markParts(
    SearchIndex& index, const std::vector<std::string>& parts, std::vector<SearchResult>& results);

/// How many there are, counted no further than the limit.
std::int64_t countResults(SearchIndex& index, const Search& search);

/// Gives each of `results` its attachments that match `expression`; tells whether there was any.
bool readAttachmentMatches(
    SearchIndex& index, const std::string& expression, std::vector<SearchResult>& results);

}  // namespace tesserine
