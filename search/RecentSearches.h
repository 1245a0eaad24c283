#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class Preferences;

/// What was searched for lately, newest first, shared by all programs of the user.
class RecentSearches {
public:
    static constexpr std::string_view preferenceKey = "tesserine.search.recent";
    static constexpr std::size_t maximumCount = 20;

    explicit RecentSearches(Preferences& preferences) : preferences_(preferences) {}

    std::vector<std::string> all() const;
    /// Puts `query` first; the same one, ignoring case, is not kept twice. A blank one is not kept.
    /// Throws `FileError`.
    void remember(std::string_view query);
    /// Throws `FileError`.
    void forgetAll();

private:
    Preferences& preferences_;
};

}  // namespace tesserine
