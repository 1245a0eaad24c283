#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The keys under which the analyzer files amounts, account numbers and dates, for what was typed.
namespace tesserine {

/// The keys of `word` when the whole of it is an amount, a number or a date; punctuation and signs
/// around it do not matter. An amount gives the keys of its form with and without zeros at the end;
/// a comma before one or two digits is a decimal point.
std::vector<std::string> keysOfWord(std::string_view word);

/// Several words in a row that are one date or account number, as "January 15, 2025" is.
struct NeighbourKeys {
    std::size_t first = 0;  ///< index of the first word
    std::size_t count = 0;  ///< words, two or more
    std::vector<std::string> keys;
};
/// In the order of the words, none sharing a word with another.
std::vector<NeighbourKeys> keysOfNeighbours(const std::vector<std::string>& words);

/// The keys of an amount typed as such; none when it is no amount.
std::vector<std::string> keysOfAmount(std::string_view typed);
/// The keys of an account number typed as such, however spaced; none without a digit.
std::vector<std::string> keysOfAccount(std::string_view typed);

}  // namespace tesserine
