#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// The tags of one note, as far as an import takes them.
class SourceTags {
public:
    static constexpr std::size_t mostTags = 500;
    static constexpr std::size_t mostCharacters = 200;

    /// Adds a tag, unless there are too many or it is too long; then one warning is added. An empty
    /// name is nothing.
    void add(std::string_view name, std::vector<std::string>& warnings);
    const std::vector<std::string>& names() const { return names_; }

private:
    std::vector<std::string> names_;
    bool hasWarned_ = false;
};

/// `title` as the library takes it: trimmed, and cut with a warning when it is too long.
std::string sourceTitle(std::string_view title, std::vector<std::string>& warnings);

}  // namespace tesserine
