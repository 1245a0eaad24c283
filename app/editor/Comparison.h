#pragma once

#include "core/body/PassageSelection.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace tesserine::app {

/// Where two texts differ, in UTF-16 units of each.
struct Comparison {
    std::vector<PassageRange> removed{};  ///< of the first text, not in the second
    std::vector<PassageRange> added{};    ///< of the second text, not in the first

    bool areEqual() const { return removed.empty() && added.empty(); }

    /// What a place stays with when something is added right there.
    enum class Side { previous, next };
    /// Where a place of the first text is in the second; in words that are gone, behind those that
    /// have come for them.
    std::size_t placeAfter(std::size_t place, Side side) const;
};

/// Compares word by word, so that whole words are marked. Texts that differ in more than
/// `mostDifferences` words are compared line by line, and beyond that as a whole between what they
/// begin and end with alike; so time and memory are bounded.
inline constexpr std::size_t mostDifferences = 2'000;
Comparison compared(std::u16string_view before, std::u16string_view after);

}  // namespace tesserine::app
