#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The English names of months and weekdays that sentences are read with.
namespace tesserine::quickadd {

/// 1 to 12 for "january", "Jan" …, ignoring case; none for any other text.
std::optional<int> monthNumber(std::string_view name);
/// 1 = Sunday … 7 = Saturday for "sunday", "Sun" …, ignoring case; none for any other text.
std::optional<int> weekdayNumber(std::string_view name);

/// All names joined by "|", each before those it begins with.
const std::string& monthAlternation();
const std::string& weekdayAlternation();

}  // namespace tesserine::quickadd
