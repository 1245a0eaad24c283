#include "ai/QuestionTerms.h"

#include "base/Text.h"
#include "search/QueryCharacters.h"
#include "search/QueryParser.h"

#include <algorithm>
#include <iterator>

namespace tesserine {
namespace {

using Kind = QueryNode::Kind;
using Form = QueryText::Form;

/// Words from this length on also stand for those they begin.
constexpr std::size_t shortestBeginning = 5;

/// English words that say how something is asked, not what. Sorted.
constexpr std::string_view smallWords[] = {
    "a",        "about",  "after", "all",    "also",  "am",      "an",      "and",    "any",
    "anything", "are",    "as",    "at",     "be",    "because", "been",    "before", "being",
    "between",  "both",   "but",   "by",     "can",   "could",   "did",     "do",     "does",
    "doing",    "each",   "few",   "find",   "for",   "from",    "further", "get",    "give",
    "had",      "has",    "have",  "having", "he",    "her",     "here",    "him",    "his",
    "how",      "i",      "if",    "in",     "into",  "is",      "it",      "its",    "just",
    "know",     "many",   "me",    "more",   "most",  "much",    "my",      "no",     "nor",
    "not",      "note",   "notes", "of",     "off",   "on",      "once",    "only",   "or",
    "other",    "our",    "out",   "over",   "own",   "please",  "same",    "say",    "says",
    "she",      "should", "show",  "so",     "some",  "such",    "tell",    "than",   "that",
    "the",      "their",  "them",  "then",   "there", "these",   "they",    "this",   "those",
    "through",  "to",     "too",   "under",  "until", "up",      "us",      "very",   "was",
    "we",       "were",   "what",  "when",   "where", "which",   "while",   "who",    "whom",
    "whose",    "why",    "will",  "with",   "would", "write",   "wrote",   "you",    "your",
};
static_assert(std::ranges::is_sorted(smallWords));

bool isSmall(std::string_view word) { return std::ranges::binary_search(smallWords, word); }

/// The question's plural also means the note's singular: "flights" finds "flight".
std::string singular(std::string word) {
    const bool isPlural =
        length(word) > shortestBeginning && word.ends_with('s') && !word.ends_with("ss");
    if (isPlural) word.pop_back();
    return word;
}

QueryNode wordNode(const std::string& word) {
    const Form form = length(word) >= shortestBeginning ? Form::prefix : Form::word;
    return {.kind = Kind::text, .text = {.text = word, .form = form}, .typed = word};
}

QueryNode onlyNotes() {
    return {
        .kind = Kind::filter, .filter = {.field = QueryField::is, .values = {{.text = "note"}}}};
}

/// The words of texts that are asked for; what is asked against stays with the filters.
void takeWords(const QueryNode& node, std::vector<std::string>& words) {
    if (node.kind == Kind::negation || node.kind == Kind::filter) return;
    if (node.kind == Kind::text) {
        for (const std::string_view piece : text::words(node.text.text)) {
            std::string word = singular(text::folded(withoutPunctuation(piece)));
            const bool isKnown = std::ranges::find(words, word) != words.end();
            if (!word.empty() && !isKnown) words.push_back(std::move(word));
        }
    }
    for (const QueryNode& child : node.children) {
        takeWords(child, words);
    }
}

bool isCondition(const QueryNode& node) {
    return node.kind == Kind::filter || node.kind == Kind::negation;
}

}  // namespace

QuestionTerms QuestionTerms::of(std::string_view question) {
    QuestionTerms terms;
    const Query typed = parseQuery(text::sanitized(std::string(question)));
    std::vector<std::string> all;
    takeWords(typed.root, all);
    std::ranges::copy_if(all, std::back_inserter(terms.words), [](const std::string& word) {
        return !isSmall(word);
    });
    if (terms.words.empty()) terms.words = std::move(all);

    auto& parts = terms.query.root.children;
    std::ranges::copy_if(typed.root.children, std::back_inserter(parts), isCondition);
    parts.push_back(onlyNotes());
    QueryNode any{.kind = Kind::any};
    std::ranges::transform(terms.words, std::back_inserter(any.children), wordNode);
    if (any.children.size() == 1) {
        parts.push_back(std::move(any.children.front()));
    } else if (!any.children.empty()) {
        parts.push_back(std::move(any));
    }
    return terms;
}

std::string lookedFor(std::string_view question, const QuestionFilters& filters) {
    std::string query(question);
    const auto add = [&query](std::string_view field, std::string value) {
        std::erase(value, '"');
        if (!value.empty()) query.append(" ").append(field).append(":\"" + value + "\"");
    };
    add("notebook", filters.notebook);
    add("after", filters.after);
    add("before", filters.before);
    return query;
}

}  // namespace tesserine
