#include "search/SearchSuggestions.h"

#include "base/Text.h"
#include "search/QueryCharacters.h"
#include "search/SearchFilters.h"
#include "search/TermDictionary.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <utility>

namespace tesserine {

/// The text on its way to suggestions: what stands before the word that is being typed, and it.
struct SearchSuggestions::Typing {
    std::string before;
    std::string word;
    std::string sign;  ///< "-" or "!" before the word
    std::vector<SearchSuggestion> found{};

    bool isFull() const { return found.size() >= maximumCount; }
    void add(SearchSuggestion suggestion) {
        const auto isSame = [&](const SearchSuggestion& known) {
            return known.replacement == suggestion.replacement;
        };
        if (isFull() || std::ranges::any_of(found, isSame)) return;
        found.push_back(std::move(suggestion));
    }
};

namespace {

using SuggestionKind = SearchSuggestion::Kind;

/// Bytes; nobody waits for help with a longer text.
constexpr std::size_t longestTyped = 10'000;
/// Titles offered beside words.
constexpr std::int64_t mostTitles = 3;
/// Words offered, so that a title may follow.
constexpr std::size_t mostWords = 5;

/// Where the last word of `text` begins, quotes around spaces counting as part of it.
std::size_t lastWordOf(std::string_view text) {
    std::size_t begin = 0;
    bool isQuoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') isQuoted = !isQuoted;
        const bool isBreak = text[i] == ' ' || text[i] == '\t' || text[i] == '(' || text[i] == '|';
        if (isBreak && !isQuoted) begin = i + 1;
    }
    return begin;
}

bool beginsWith(std::string_view text, const std::string& foldedBeginning) {
    return indexFold(text).starts_with(foldedBeginning);
}

/// A value as it stands after a colon.
std::string quotedIfNeeded(const std::string& value) {
    const bool isBare = value.find_first_of(" ,\"()|*") == std::string::npos;
    if (isBare && indexFold(value) != "none") return value;
    std::string quoted = "\"";
    for (const char c : value) {
        if (c == '"') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

/// Every name in the lists with the number of lists that hold it, the most frequent first.
std::vector<SearchSuggestion> counted(const std::vector<std::vector<std::string>>& lists) {
    std::map<std::string, std::int64_t> counts;
    for (const auto& list : lists) {
        for (const std::string& name : list) {
            ++counts[name];
        }
    }
    std::vector<std::pair<std::string, std::int64_t>> ordered(counts.begin(), counts.end());
    std::ranges::stable_sort(
        ordered, std::ranges::greater{}, &decltype(ordered)::value_type::second);
    std::vector<SearchSuggestion> all;
    all.reserve(ordered.size());
    for (const auto& [name, count] : ordered) {
        all.push_back(
            {.kind = SuggestionKind::value, .title = name, .detail = std::to_string(count)});
    }
    return all;
}

std::vector<SearchSuggestion> fixedValues(std::span<const std::string_view> values) {
    std::vector<SearchSuggestion> all;
    for (const std::string_view value : values) {
        all.push_back({.kind = SuggestionKind::value, .title = std::string(value)});
    }
    return all;
}

}  // namespace

std::string_view nameOf(SearchSuggestion::Kind kind) {
    switch (kind) {
    case SuggestionKind::operatorName: return "operator";
    case SuggestionKind::value: return "value";
    case SuggestionKind::word: return "word";
    case SuggestionKind::recent: return "recent";
    }
    return "";
}

std::vector<SearchSuggestion> SearchSuggestions::suggest(
    std::string_view typed, std::span<const std::string> recent) const {
    if (typed.size() > longestTyped) return {};
    const std::string text = text::sanitized(std::string(typed));
    const std::size_t begin = lastWordOf(text);
    Typing typing{.before = text.substr(0, begin), .word = text.substr(begin)};
    while (typing.word.starts_with('-') || typing.word.starts_with('!')) {
        typing.sign += typing.word.front();
        typing.word.erase(0, 1);
    }
    if (!typing.word.empty()) {
        addOperators(typing);
        addValues(typing);
    }
    addRecent(typing, recent);
    if (!typing.word.empty()) addWords(typing);
    return std::move(typing.found);
}

void SearchSuggestions::addOperators(Typing& typing) const {
    const std::string lower = text::asciiLowercased(typing.word);
    for (const QueryFieldInfo& info : queryFields()) {
        const std::string name = std::string(info.name) + ":";
        if (!name.starts_with(lower) || name == lower) continue;
        typing.add(
            {.kind = SuggestionKind::operatorName,
             .title = name,
             .replacement = typing.before + typing.sign + name,
             .detail = std::string(info.help)});
    }
}

/// After "tag:wo" and "#wo" the tags that begin so, and the like.
void SearchSuggestions::addValues(Typing& typing) const {
    const bool isTag = typing.word.starts_with('#');
    const std::size_t colon = isTag ? 0 : typing.word.find(':');
    if (colon == std::string::npos) return;
    const auto field =
        isTag ? QueryField::tag : findQueryField(std::string_view(typing.word).substr(0, colon));
    if (!field) return;

    // Of several values, the last one is being typed.
    std::string begun = typing.word.substr(colon + 1);
    std::string kept = typing.word.substr(0, colon + 1);
    if (const std::size_t comma = begun.rfind(','); comma != std::string::npos && !isTag) {
        kept += begun.substr(0, comma + 1);
        begun.erase(0, comma + 1);
    }
    if (begun.starts_with('"')) begun.erase(0, 1);
    const std::string folded = indexFold(begun);
    for (SearchSuggestion& value : valuesOf(*field)) {
        if (!beginsWith(value.title, folded)) continue;
        value.replacement = typing.before + typing.sign + kept + quotedIfNeeded(value.title) + " ";
        typing.add(std::move(value));
    }
}

void SearchSuggestions::addRecent(Typing& typing, std::span<const std::string> recent) const {
    const std::string whole = indexFold(typing.before + typing.sign + typing.word);
    for (const std::string& query : recent) {
        if (!beginsWith(query, whole) || indexFold(query) == whole) continue;
        typing.add({.kind = SuggestionKind::recent, .title = query, .replacement = query});
    }
}

void SearchSuggestions::addWords(Typing& typing) const {
    const std::string folded = indexFold(typing.word);
    if (!hasWordCharacter(folded) || folded.find_first_of(":\"#") != std::string::npos) return;
    std::size_t words = 0;
    for (const std::string& term : index_.termsBetween(folded, folded + std::string(lastOfTerms))) {
        if (term == folded || words == mostWords) continue;
        ++words;
        typing.add(
            {.kind = SuggestionKind::word,
             .title = term,
             .replacement = typing.before + typing.sign + term + " "});
    }
    for (const std::string& title :
         index_.titlesLike(filter::likeLiteral(folded) + "%", mostTitles)) {
        typing.add(
            {.kind = SuggestionKind::word,
             .title = title,
             .replacement = typing.before + typing.sign + quotedIfNeeded(title) + " ",
             .detail = "title"});
    }
}

std::vector<SearchSuggestion> SearchSuggestions::valuesOf(QueryField field) const {
    static constexpr std::array<std::string_view, 3> orders{"relevance", "newest", "oldest"};
    static constexpr std::array<std::string_view, 5> belongings{
        "attachment", "text", "location", "reminder", "tag"};
    static constexpr std::array<std::string_view, 10> states{
        "favorite",
        "note",
        "task",
        "trashed",
        "open",
        "done",
        "overdue",
        "locked",
        "conflict",
        "template"};
    static constexpr std::array<std::string_view, 4> priorities{"1", "2", "3", "4"};
    switch (field) {
    case QueryField::tag: return counted(index_.tagLists());
    case QueryField::type: return counted(index_.typeLists());
    case QueryField::notebook: {
        std::vector<SearchSuggestion> all;
        for (const auto& [notebook, documents] : index_.notebookCounts()) {
            all.push_back(
                {.kind = SuggestionKind::value,
                 .title = notebook,
                 .detail = std::to_string(documents)});
        }
        return all;
    }
    case QueryField::created:
    case QueryField::before:
    case QueryField::after:
    case QueryField::edited: {
        std::vector<SearchSuggestion> all;
        for (const std::string& year : index_.years()) {
            all.push_back({.kind = SuggestionKind::value, .title = year});
        }
        return all;
    }
    case QueryField::sort: return fixedValues(orders);
    case QueryField::has: return fixedValues(belongings);
    case QueryField::is: return fixedValues(states);
    case QueryField::priority: return fixedValues(priorities);
    case QueryField::scope:
    case QueryField::title:
    case QueryField::body:
    case QueryField::file:
    case QueryField::near:
    case QueryField::due:
    case QueryField::amount:
    case QueryField::account: break;
    }
    return {};
}

}  // namespace tesserine
