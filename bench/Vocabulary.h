#pragma once

#include "bench/Dice.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tesserine::bench {

/// A few thousand words as often as language has them: the common ones are English, the rare ones
/// made up but pronounceable, some with accents. Immutable.
class Vocabulary {
public:
    /// `wordCount`: at least the English words, at most 20,000.
    Vocabulary(std::uint64_t seed, std::size_t wordCount);

    /// A word, the n-th most common one with a weight of 1 / (n + 2) (Zipf's law, flattened at the
    /// top as in real text).
    const std::string& word(Dice& dice) const;
    /// A made-up word, each as likely as the other; fit for a name.
    const std::string& rareWord(Dice& dice) const;
    const std::vector<std::string>& words() const { return words_; }

private:
    std::vector<std::string> words_;         // the most common first
    std::vector<std::uint64_t> cumulative_;  // weights of the words up to this one
};

}  // namespace tesserine::bench
