#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tesserine {

/// Finds notes of an import by their titles, for sources whose links name nothing else. Case and
/// white space do not count.
class NoteTitles {
public:
    void add(std::size_t note, std::string_view title);
    /// The one note of this title; none when there are several.
    std::optional<std::size_t> find(std::string_view title) const;

private:
    std::unordered_map<std::string, std::optional<std::size_t>> notes_;
};

}  // namespace tesserine
