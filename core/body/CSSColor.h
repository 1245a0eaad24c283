#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tesserine::css {

/// `value` as "#rrggbb", when it is one opaque colour: a name, "#rgb", "#rrggbb", or rgb() and
/// rgba() of numbers or percentages. Source: CSS Color Module Level 4, sections 5 and 6.
std::optional<std::string> opaqueColor(std::string_view value);

}  // namespace tesserine::css
