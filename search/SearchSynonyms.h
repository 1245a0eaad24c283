#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class Preferences;

/// Words and phrases that the user wants to be found for each other.
struct SearchSynonyms {
    static constexpr std::string_view preferenceKey = "tesserine.search.synonyms";

    /// Each of two members or more.
    std::vector<std::vector<std::string>> groups;

    /// The other members of the groups that hold `word`, ignoring case and diacritics.
    std::vector<std::string> of(std::string_view word) const;

    /// One line for each group, its members between commas, as people edit them; empty groups and
    /// those of one member are dropped.
    static SearchSynonyms fromLines(std::string_view lines);
    std::string lines() const;

    /// No groups when there are none or they cannot be read.
    static SearchSynonyms load(const Preferences& preferences);
    /// Throws `FileError`.
    void save(Preferences& preferences) const;
};

}  // namespace tesserine
