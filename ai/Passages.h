#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Cuts `text` into pieces of at most `longest` characters, at the ends of paragraphs where there
/// are some, else of sentences, else of words. Each piece after the first begins with the last
/// words of the one before, about `overlap` characters, so that nothing is torn apart. Views into
/// `text`; blank pieces are left out.
std::vector<std::string_view> cutPassages(
    std::string_view text, std::size_t longest, std::size_t overlap);

/// The place in a passage to look at: the beginning of the line that holds most of `words`
/// (folded), at most 80 characters of it, cut between words. Empty for a blank passage.
std::string_view bestPlace(std::string_view passage, const std::vector<std::string>& words);

/// How often each of `words` (folded) occurs in `text`, a word of five letters and more also as
/// the beginning of others.
std::vector<std::size_t> occurrences(std::string_view text, const std::vector<std::string>& words);

}  // namespace tesserine
