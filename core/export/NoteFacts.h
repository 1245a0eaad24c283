#pragma once

#include "base/Text.h"
#include "core/export/NotePage.h"
#include "core/model/NoteEntities.h"

#include <string>
#include <vector>

namespace tesserine {

class Calendar;

/// The names of a note's tags as a reader expects them sorted.
std::vector<std::string> tagNames(const CDNote& note, const text::Collator& collator);

/// What the page of a note says under its title: notebook, `tags`, dates, source, state.
std::vector<PageFact> factsOf(
    const CDNote& note, const std::vector<std::string>& tags, const Calendar& calendar);

/// "14 March 2026 at 10:15"
std::string dateText(Instant instant, const Calendar& calendar);

/// Where notes in no notebook stand.
inline constexpr std::string_view unfiled = "Unfiled";

}  // namespace tesserine
