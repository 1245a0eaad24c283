#pragma once

#include "core/tasks/QuickAddParser.h"
#include "core/tasks/QuickAddPattern.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tesserine::quickadd {

/// A match of a pattern in a sentence, for whoever makes something of it.
class Found {
public:
    Found(std::string_view sentence, const Regex::Match& match)
        : sentence_(sentence), match_(match) {}

    std::string_view sentence() const { return sentence_; }
    /// Whether group `group` took part.
    bool has(std::size_t group) const { return bool(match_.groups[group]); }
    std::string_view text(std::size_t group) const { return match_.group(sentence_, group); }
    /// The value of a group of decimal digits, of any script; at most `tooLarge`.
    int number(std::size_t group) const;
    /// Where group `group` stands, which took part. Without white space around it.
    TextRange range(std::size_t group = 0) const;
    /// From the start of the match up to `end`, without white space around it.
    TextRange rangeUntil(std::size_t end) const;

    static constexpr int tooLarge = 1'000'000;

private:
    std::string_view sentence_;
    const Regex::Match& match_;
};

/// A sentence while tokens are looked for in it: its text, and the parts that are no longer free.
class Sentence {
public:
    /// Composes `typed` and straightens the quotes around names in it.
    Sentence(std::string_view typed, std::span<const TextRange> leftAlone);
    Sentence(const Sentence&) = delete;
    Sentence& operator=(const Sentence&) = delete;
    ~Sentence() = default;

    const std::string& text() const { return text_; }

    /// Makes `range` a token: what is found later may not overlap it.
    void take(TextRange range) { tokens_.push_back(range); }
    /// Keeps `range` in the title: no token may overlap it.
    void leaveAlone(TextRange range) { leftAlone_.push_back(range); }
    bool isFree(TextRange range) const;
    std::string_view behind(TextRange range) const {
        return std::string_view(text_).substr(range.end);
    }
    /// Whether a word, a number or an amount does not go on behind `range`: "today's", "3/5/20275"
    /// and "every sun|set" do.
    bool isWhole(TextRange range) const;
    /// Whether a combining mark follows, so that `range` ends inside a character.
    bool isCutInCharacter(TextRange range) const;

    /// Shows `take` each match of `pattern`, from left to right, until it returns false.
    void forEach(const Pattern& pattern, const std::function<bool(const Found&)>& take) const;

    /// What `read` makes of the first match for which its hit has a `range` that is free and whole.
    /// A match that comes to nothing is passed over as if it were not there.
    template <class Read>
    auto first(const Pattern& pattern, Read read) const {
        std::invoke_result_t<Read, const Found&> hit;
        forEach(pattern, [&](const Found& found) {
            hit = read(found);
            if (hit && !(isFree(hit->range) && isWhole(hit->range))) hit.reset();
            return !hit;
        });
        return hit;
    }

    /// The words outside the tokens, joined by single spaces.
    std::string title() const;

private:
    std::string text_;
    std::vector<std::string_view> words_;
    std::vector<TextRange> leftAlone_;
    std::vector<TextRange> tokens_;
};

}  // namespace tesserine::quickadd
