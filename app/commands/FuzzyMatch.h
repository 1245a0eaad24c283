#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace tesserine::app {

/// How well typed characters name a text.
struct FuzzyMatch {
    int score = 0;                 ///< higher is better
    std::vector<int> positions{};  ///< of the characters that match, in UTF-16 units
};

/// Whether the characters of `typed` appear in `text` in their order, ignoring case, diacritics and
/// spaces typed; else whether every word of `typed` stands in it somewhere. Beginnings of words,
/// neighbours and an early place count more: "cmd" names "Command" before "calm down". Nothing
/// typed matches everything.
std::optional<FuzzyMatch> fuzzyMatch(const QString& typed, const QString& text);

/// Whether every word of `typed` stands in `text`, in any order: "plan gar" names "Garden plans".
std::optional<FuzzyMatch> wordsMatch(const QString& typed, const QString& text);

}  // namespace tesserine::app
