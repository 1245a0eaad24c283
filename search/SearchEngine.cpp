#include "search/SearchEngine.h"

#include "base/Text.h"
#include "search/QueryCharacters.h"
#include "search/QueryParser.h"
#include "search/SearchRows.h"

#include <algorithm>
#include <functional>

namespace tesserine {

/// One search on its way from stage to stage.
struct SearchEngine::Run {
    Query query;
    bool isTyping = false;
    std::int64_t limit = 0;
    Instant now;
    std::chrono::nanoseconds end{};  // of the time it may take, on the monotonic clock
    bool isOutOfTime = false;
    SearchResponse response{};
};

namespace {

using Kind = QueryNode::Kind;
using Form = QueryText::Form;

constexpr std::int64_t mostTermsContaining = 50;
constexpr std::int64_t mostPartsOfWords = 200;
constexpr std::chrono::milliseconds longestLookIntoWords{1'000};
constexpr std::chrono::milliseconds longestLookWhileTyping{100};
constexpr std::size_t shortestPart = 2;       // bytes
constexpr std::size_t shortestCorrected = 4;  // letters

constexpr const char* outOfTime = "The search took too long, so it was given up.";

std::vector<std::size_t> wordsOf(const Query& query) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < query.root.children.size(); ++i) {
        if (query.root.children[i].isWord()) places.push_back(i);
    }
    return places;
}

Query without(const Query& query, std::size_t place) {
    Query rest = query;
    rest.root.children.erase(rest.root.children.begin() + static_cast<std::ptrdiff_t>(place));
    return rest;
}

/// Every word that is to be found, wherever it stands; what is negated is not.
void forEachWord(QueryNode& node, const std::function<void(QueryNode& word)>& visit) {
    if (node.isWord()) visit(node);
    if (node.kind == Kind::negation) return;
    for (QueryNode& child : node.children) {
        forEachWord(child, visit);
    }
}

}  // namespace

SearchResponse SearchEngine::search(const Request& request) {
    const auto begin = setting_.clock.monotonic();
    const std::string text = text::sanitized(request.text);
    Run run{
        .query = parseQuery(text, request.lastWord),
        .isTyping = request.lastWord == QueryScanner::LastWord::mayGoOn,
        .limit = std::clamp<std::int64_t>(request.limit, 1, largestLimit),
        .now = setting_.clock.now(),
        .end = begin + longestSearch};
    const bool isFound = findAsTyped(run)
                         || (request.effort == Effort::all
                             && (findCorrected(run) || findPartsOfWords(run)
                                 || findWithoutOneWord(run) || findAnyWord(run)));
    if (!isFound && request.effort == Effort::all) countWithoutOneFilter(run);
    if (run.isOutOfTime) run.response.hints.emplace_back(outOfTime);
    run.response.elapsed =
        std::chrono::duration<double>(setting_.clock.monotonic() - begin).count();
    return std::move(run.response);
}

SearchResponse SearchEngine::find(Query query, std::int64_t limit) {
    Run run{
        .query = std::move(query),
        .limit = std::clamp<std::int64_t>(limit, 1, largestLimit),
        .now = setting_.clock.now(),
        .end = setting_.clock.monotonic() + longestSearch};
    findAsTyped(run);
    if (run.isOutOfTime) run.response.hints.emplace_back(outOfTime);
    return std::move(run.response);
}

bool SearchEngine::findAsTyped(Run& run) {
    const CompiledQuery compiled = compile(run.query, run.limit);
    run.response.hints = compiled.hints;
    return take(run, compiled);
}

/// Puts the nearest word there is in the place of each that the index has never seen.
bool SearchEngine::findCorrected(Run& run) {
    Query corrected = run.query;
    std::vector<SearchCorrection> corrections;
    forEachWord(corrected.root, [&](QueryNode& word) {
        auto suggestion = correction(word.text);
        if (!suggestion) return;
        corrections.push_back({.typed = word.text.text, .suggestion = *suggestion});
        word.text = {.text = std::move(*suggestion), .form = Form::word};
    });
    if (corrections.empty() || !take(run, compile(corrected, run.limit))) return false;
    run.response.showingCloseMatches = true;
    run.response.corrections = std::move(corrections);
    return true;
}

/// Looks for the words in the stored text itself, where they may be parts of longer ones.
bool SearchEngine::findPartsOfWords(Run& run) {
    Query rest = run.query;
    std::vector<std::string> parts;
    std::erase_if(rest.root.children, [&](const QueryNode& child) {
        if (!child.isWord() || child.text.text.size() < shortestPart) return false;
        parts.push_back(child.text.text);
        return true;
    });
    if (parts.empty()) return false;
    CompiledQuery compiled = compile(rest, std::min(run.limit, mostPartsOfWords));
    for (const std::string& part : parts) {
        compiled.search.filters.push_back(filter::textContaining(part));
    }

    // Reading every text takes its time; nobody waits for it as for a search of the index.
    if (run.isOutOfTime) return false;
    const auto end = run.end;
    const auto longest = run.isTyping ? longestLookWhileTyping : longestLookIntoWords;
    run.end = std::min(end, setting_.clock.monotonic() + longest);
    const bool isFound = take(run, compiled);
    run.end = end;
    run.isOutOfTime = false;
    run.response.matchedPartsOfWords = isFound;
    if (!isFound) return false;
    SearchIndex& index = setting_.index;
    index.perform([&](SQLiteDatabase& /*open*/) { markParts(index, parts, run.response.results); });
    std::ranges::for_each(run.response.results, showWhatMatched);
    return true;
}

/// Leaves out the word without which there is most to find; of equals, the last.
bool SearchEngine::findWithoutOneWord(Run& run) {
    const auto words = wordsOf(run.query);
    if (words.size() < 2) return false;
    std::size_t dropped = 0;
    std::int64_t most = 0;
    for (const std::size_t place : words) {
        const std::int64_t found = count(run, without(run.query, place));
        if (found == 0 || found < most) continue;
        most = found;
        dropped = place;
    }
    if (most == 0 || !take(run, compile(without(run.query, dropped), run.limit))) return false;
    run.response.matchedSomeTermsOnly = true;
    run.response.relaxation = {
        .droppedTerm = run.query.root.children[dropped].typed, .resultCount = most};
    return true;
}

bool SearchEngine::findAnyWord(Run& run) {
    if (wordsOf(run.query).size() < 3) return false;
    Query any;
    QueryNode words{.kind = Kind::any};
    for (const QueryNode& child : run.query.root.children) {
        (child.isWord() ? words : any.root).children.push_back(child);
    }
    any.root.children.push_back(std::move(words));
    if (!take(run, compile(any, run.limit))) return false;
    run.response.matchedSomeTermsOnly = true;
    return true;
}

/// Tells of the filter without which there is most to find.
void SearchEngine::countWithoutOneFilter(Run& run) {
    for (std::size_t i = 0; i < run.query.root.children.size(); ++i) {
        const QueryNode& child = run.query.root.children[i];
        const QueryNode& term = child.kind == Kind::negation ? child.children.front() : child;
        if (term.kind != Kind::filter) continue;
        const std::int64_t found = count(run, without(run.query, i));
        const std::int64_t most =
            run.response.relaxation ? run.response.relaxation->resultCount : 1;
        if (found < most) continue;
        run.response.relaxation = {
            .droppedTerm = (&term == &child ? "" : "-") + term.typed, .resultCount = found};
    }
}

CompiledQuery SearchEngine::compile(const Query& query, std::int64_t limit) {
    return QueryCompiler(
               {.vocabulary = *this,
                .library = setting_.library,
                .now = setting_.clock.now(),
                .calendar = setting_.calendar},
               setting_.synonyms)
        .compile(query, limit);
}

/// Runs a compiled query; tells whether it has results, which are then those of the response.
bool SearchEngine::take(Run& run, const CompiledQuery& compiled) {
    std::vector<SearchResult> results;
    SearchIndex& index = setting_.index;
    const bool isFinished = finishes(run, [&] {
        results = readResults(index, compiled.search, run.now);
        if (!compiled.attachmentsWithAll) return;
        const bool isAny = readAttachmentMatches(index, *compiled.attachmentsWithAll, results);
        const bool hasOthers = compiled.attachmentsWithAny != compiled.attachmentsWithAll;
        if (!isAny && hasOthers) {
            readAttachmentMatches(index, *compiled.attachmentsWithAny, results);
        }
    });
    if (!isFinished) results.clear();
    std::ranges::for_each(results, showWhatMatched);
    run.response.results = std::move(results);
    return !run.response.results.empty();
}

std::int64_t SearchEngine::count(Run& run, const Query& query) {
    const CompiledQuery compiled = compile(query, run.limit);
    std::int64_t found = 0;
    finishes(run, [&] { found = countResults(setting_.index, compiled.search); });
    return found;
}

/// Runs `body` on the index's queue in the time that is left.
bool SearchEngine::finishes(Run& run, const std::function<void()>& body) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(run.end - setting_.clock.monotonic());
    if (left.count() <= 0) run.isOutOfTime = true;
    if (run.isOutOfTime) return false;
    run.isOutOfTime = !setting_.index.perform(
        [&](SQLiteDatabase& index) { return index.finishesWithin(left, body); });
    return !run.isOutOfTime;
}

/// What was probably meant by a word that the index does not know.
std::optional<std::string> SearchEngine::correction(const QueryText& word) {
    const std::string folded = indexFold(withoutPunctuation(word.text));
    const bool isCorrectable =
        word.form != Form::part && isOnlyLetters(folded) && length(folded) >= shortestCorrected;
    if (!isCorrectable) return std::nullopt;
    if (setting_.index.hasTerm(folded, folded + std::string(lastOfTerms))) return std::nullopt;
    return dictionary().closest(folded);
}

const TermDictionary& SearchEngine::dictionary() {
    const std::pair generation{setting_.index.generation(), setting_.index.fileGeneration()};
    if (dictionaryGeneration_ != generation) {
        dictionary_ = TermDictionary(setting_.index.terms());
        dictionaryGeneration_ = generation;
    }
    return dictionary_;
}

std::vector<std::string> SearchEngine::termsContaining(const std::string& part) {
    return setting_.index.termsLike("%" + filter::likeLiteral(part) + "%", mostTermsContaining);
}

/// Tags are told apart by case and accents in the tree, never by a person who looks for one.
std::vector<std::string> SearchEngine::tagsBelow(const std::string& name) {
    const std::string folded = indexFold(name);
    const auto meant = setting_.index.perform([&](SQLiteDatabase& index) {
        std::vector<std::string> names;
        Statement all = index.prepare("SELECT name FROM tag_tree");
        while (all.step()) {
            std::string tag = all.text(0).value_or("");
            if (indexFold(tag) == folded) names.push_back(std::move(tag));
        }
        return names;
    });
    std::vector<std::string> below;
    for (const std::string& tag : meant) {
        const auto tags = setting_.index.descendantTags(tag);
        below.insert(below.end(), tags.begin(), tags.end());
    }
    return below;
}

}  // namespace tesserine
