#pragma once

#include "base/Preferences.h"

#include <string>
#include <string_view>

namespace tesserine {

/// The user's setting: 1 = Sunday … 7 = Saturday. Absent: that of the language.
inline constexpr std::string_view firstWeekdayKey = "tesserine.firstWeekday";

/// The day that weeks begin with: the user's setting, else that of `locale`, an ICU or POSIX name.
int firstWeekday(const Preferences& preferences, const std::string& locale);

}  // namespace tesserine
