#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "search/QueryCompiler.h"
#include "search/QueryScanner.h"
#include "search/QuerySources.h"
#include "search/SearchIndex.h"
#include "search/SearchResponse.h"
#include "search/SearchSynonyms.h"
#include "search/TermDictionary.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tesserine {

/// Answers queries from the index: as typed, and when that finds nothing, corrected, within words,
/// with a word left out, with any of the words.
///
/// Nothing typed is an error; only the index can fail (`SQLiteDatabase::Error`). Belongs to one
/// thread, that of the library it asks; the statements run on the index's queue.
class SearchEngine final : private QueryVocabulary {
public:
    /// Everything outlives the engine. `library` may be null.
    struct Setting {
        SearchIndex& index;
        QueryLibrary* library = nullptr;
        const Clock& clock;
        const Calendar& calendar;
        SearchSynonyms synonyms{};
    };
    explicit SearchEngine(Setting setting) : setting_(std::move(setting)) {}

    static constexpr std::int64_t defaultLimit = 50;
    static constexpr std::int64_t largestLimit = 10'000;
    /// A search that takes longer is given up, and says so.
    static constexpr std::chrono::seconds longestSearch{10};

    enum class Effort {
        all,
        asTyped,  ///< "search instead for what I typed"
    };
    struct Request {
        std::string text{};
        std::int64_t limit = defaultLimit;  ///< results, from 1 to `largestLimit`
        QueryScanner::LastWord lastWord = QueryScanner::LastWord::asTyped;
        Effort effort = Effort::all;
    };
    SearchResponse search(const Request& request);
    /// The best results of exactly this query, at most `limit`; no other one is tried.
    SearchResponse find(Query query, std::int64_t limit);

private:
    struct Run;
    std::vector<std::string> termsContaining(const std::string& part) override;
    std::vector<std::string> tagsBelow(const std::string& name) override;

    bool findAsTyped(Run& run);
    bool findCorrected(Run& run);
    bool findPartsOfWords(Run& run);
    bool findWithoutOneWord(Run& run);
    bool findAnyWord(Run& run);
    void countWithoutOneFilter(Run& run);

    CompiledQuery compile(const Query& query, std::int64_t limit);
    bool take(Run& run, const CompiledQuery& compiled);
    std::int64_t count(Run& run, const Query& query);
    bool finishes(Run& run, const std::function<void()>& body);
    std::optional<std::string> correction(const QueryText& word);
    const TermDictionary& dictionary();

    Setting setting_;
    TermDictionary dictionary_;
    /// Of the index when the dictionary was made.
    std::optional<std::pair<std::uint64_t, std::int64_t>> dictionaryGeneration_;
};

}  // namespace tesserine
