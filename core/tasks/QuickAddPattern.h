#pragma once

#include "base/Regex.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine::quickadd {

/// An expression that ignores case, and the beginnings of words without which it cannot match.
/// Looking for those first is much cheaper: most sentences hold few kinds of tokens.
class Pattern {
public:
    /// `beginnings` are joined by "|", in lower case; "0" is any digit.
    Pattern(const std::string& expression, std::string_view beginnings);
    /// `word` where it begins behind white space and ends as a word.
    static Pattern word(const std::string& word);

    const Regex& regex() const { return regex_; }
    /// Whether a match can begin, or go on, with `word`: a piece of a sentence without white space.
    bool mayTake(std::string_view word) const;

private:
    Regex regex_;
    std::vector<std::string> beginnings_;
};

}  // namespace tesserine::quickadd
