#include "bench/Vocabulary.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <set>
#include <string_view>

namespace tesserine::bench {
namespace {

/// The most common first, as far as anybody counts.
constexpr std::array<std::string_view, 140> english = {
    "the",     "of",     "and",    "to",     "a",      "in",    "is",      "it",       "for",
    "that",    "was",    "on",     "with",   "as",     "be",    "this",    "from",     "have",
    "or",      "by",     "one",    "not",    "but",    "what",  "all",     "when",     "we",
    "there",   "can",    "an",     "your",   "which",  "their", "will",    "if",       "how",
    "each",    "about",  "up",     "out",    "many",   "then",  "them",    "these",    "so",
    "some",    "would",  "make",   "like",   "time",   "into",  "has",     "look",     "more",
    "two",     "write",  "see",    "number", "no",     "way",   "could",   "people",   "than",
    "first",   "been",   "call",   "who",    "now",    "find",  "long",    "down",     "day",
    "get",     "come",   "made",   "may",    "part",   "over",  "new",     "after",    "sound",
    "take",    "only",   "work",   "know",   "place",  "year",  "live",    "back",     "give",
    "most",    "very",   "thing",  "our",    "just",   "name",  "good",    "before",   "line",
    "right",   "too",    "mean",   "old",    "any",    "same",  "tell",    "follow",   "want",
    "show",    "also",   "around", "form",   "small",  "set",   "put",     "end",      "does",
    "another", "well",   "large",  "must",   "even",   "need",  "meeting", "plan",     "project",
    "note",    "list",   "idea",   "budget", "review", "draft", "agenda",  "question", "answer",
    "travel",  "recipe", "garden", "house",  "letter",
};

constexpr std::array<std::string_view, 30> onsets = {
    "b", "c", "d", "f",  "g",  "h",  "l",  "m",  "n",  "p",  "r",  "s",  "t",  "v",  "w",
    "k", "j", "z", "br", "cl", "cr", "dr", "fl", "gr", "pl", "pr", "sh", "st", "tr", "th",
};
constexpr std::array<std::string_view, 9> vowels = {
    "a", "e", "i", "o", "u", "ea", "ou", "ia", "io"};
constexpr std::array<std::string_view, 8> codas = {"", "", "", "n", "r", "l", "s", "m"};
constexpr std::array<std::string_view, 6> accented = {"é", "ü", "ö", "å", "ñ", "ç"};

std::string madeUpWord(Dice& dice) {
    std::string word;
    const std::size_t syllables = dice.between(1, 3);
    for (std::size_t i = 0; i < syllables; ++i) {
        word += onsets[dice.below(onsets.size())];
        word += vowels[dice.below(vowels.size())];
        word += codas[dice.below(codas.size())];
    }
    if (dice.chance(25)) word += accented[dice.below(accented.size())];
    return word;
}

}  // namespace

Vocabulary::Vocabulary(std::uint64_t seed, std::size_t wordCount) {
    assert(wordCount > english.size() && wordCount <= 20'000 && "more are hard to make up");
    Dice dice(seed);
    words_.assign(english.begin(), english.end());
    std::set<std::string, std::less<>> known(words_.begin(), words_.end());
    while (words_.size() < wordCount) {
        std::string word = madeUpWord(dice);
        if (known.insert(word).second) words_.push_back(std::move(word));
    }
    std::uint64_t sum = 0;
    for (std::size_t n = 0; n < words_.size(); ++n) {
        cumulative_.push_back(sum += (std::uint64_t{1} << 32) / (n + 2));
    }
}

const std::string& Vocabulary::word(Dice& dice) const {
    const std::uint64_t thrown = dice.next() % cumulative_.back();
    const auto found = std::ranges::upper_bound(cumulative_, thrown);
    return words_[static_cast<std::size_t>(found - cumulative_.begin())];
}

const std::string& Vocabulary::rareWord(Dice& dice) const {
    return words_[dice.between(english.size(), words_.size() - 1)];
}

}  // namespace tesserine::bench
