#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// Joins two changes of one body when they touched different blocks (paragraphs, list, tables at
/// the top level); none when both changed the same place. All three are canonical, and so is the
/// result.
std::optional<std::string> mergedBody(
    std::string_view base, std::string_view mine, std::string_view theirs);

}  // namespace tesserine
