#pragma once

#include <cstddef>
#include <string_view>

/// Kinds of characters as the index's tokenizer sees them.
namespace tesserine {

bool isWhiteSpace(char32_t scalar);
/// Whether the index can hold anything of `text`: a letter, a digit or another number.
bool hasWordCharacter(std::string_view text);
bool hasDigit(std::string_view text);
bool isOnlyLetters(std::string_view text);
/// Scalars in `text`.
std::size_t length(std::string_view text);
/// `text` without what stands before its first and behind its last letter or number; empty when it
/// has none. A view into `text`.
std::string_view withoutPunctuation(std::string_view text);
/// The first word in `text` as the index splits it: letters and numbers, with accents that are
/// scalars of their own; empty when there is none. A view into `text`.
std::string_view firstWord(std::string_view text);
/// Whether `text` holds a letter of a script that sets no spaces between its words: Han, Hiragana,
/// Katakana, Thai, Lao, Khmer or Myanmar.
bool hasUnspacedScript(std::string_view text);

/// `text` up to `byteLimit` bytes, ended where a word ends if possible.
std::string_view cutAtWord(std::string_view text, std::size_t byteLimit);

}  // namespace tesserine
