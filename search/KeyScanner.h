#pragma once

#include "search/SearchAnalyzer.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Of ASCII.
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Walks one text and notes every key in it. Skips from digit to digit: a key always holds one.
///
/// A token is a run of letters, marks and numbers. Only tokens of ASCII digits count, and the words
/// directly before a year.
class KeyScanner {
public:
    /// Adds what it finds to `found`, which outlives it, as does the text.
    KeyScanner(std::string_view text, std::vector<SearchAnalyzer::Found>& found)
        : text_(text), found_(found) {}

    void scan();

    /// The month, from 1, that a lower-cased English name, its first three letters, or "sept" says.
    static std::optional<int> monthNamed(std::string_view word);

private:
    /// A part of the text, by byte offsets.
    struct Token {
        std::size_t begin = 0;
        std::size_t end = 0;
        std::size_t length() const { return end - begin; }
    };
    using Run = std::span<const Token>;
    struct Date {
        int year = 0;
        int month = 0;
        int day = 0;  ///< 0: none
    };

    Token tokenAround(std::size_t digit) const;
    Token tokenBefore(std::size_t place) const;
    void take(const Token& digits);
    void endChain();
    template <class TryRun>
    void forEachRun(std::string_view separators, TryRun tryRun) const;

    void addYear(const Token& token);
    void addNamedMonth(const Token& year);
    void addDates(Run run, char separator);
    void addAmounts();
    void addAmount(Run run);
    void addAccount(Run run);
    void addDate(const Date& date, const Token& where);
    void add(std::string key, const Token& where);

    std::vector<Date> datesIn(Run run, char separator) const;
    std::optional<int> dayIn(const Token& token) const;
    std::optional<int> monthIn(const Token& token) const;
    int numberIn(const Token& token) const;
    std::string_view textOf(const Token& token) const {
        return text_.substr(token.begin, token.length());
    }
    char separatorAfter(const Token& token) const { return text_[token.end]; }

    std::string_view text_;
    std::vector<SearchAnalyzer::Found>& found_;
    std::vector<Token> chain_;  // digit tokens with exactly one character between each two
};

}  // namespace tesserine
