#include "cli/Settings.h"

#include "base/FirstWeekday.h"
#include "core/services/TrashRetention.h"
#include "search/SearchSynonyms.h"

#include <algorithm>
#include <array>

namespace tesserine::cli {

namespace {

constexpr std::string_view prefix = "tesserine.";

constexpr std::array<Setting, 3> table{{
    {.key = TrashRetention::daysKey,
     .type = Setting::Type::integer,
     .least = 0,
     .most = 36'499,
     .fallback = "0",
     .summary = "Days after which notes in the trash are deleted at the next start; 0 keeps them"},
    {.key = firstWeekdayKey,
     .type = Setting::Type::integer,
     .least = 1,
     .most = 7,
     .fallback = "that of the language",
     .summary = "The first day of the week, from 1 (Sunday) to 7 (Saturday)"},
    {.key = SearchSynonyms::preferenceKey,
     .type = Setting::Type::synonyms,
     .fallback = "none",
     .summary = "Words that are found for each other, as “invoice, bill; car, auto”"},
}};

}  // namespace

std::span<const Setting> settings() { return table; }

const Setting* findSetting(std::string_view key) {
    const auto* const found = std::ranges::find_if(table, [&](const Setting& setting) {
        return setting.key == key || setting.key.substr(prefix.size()) == key;
    });
    return found == table.end() ? nullptr : &*found;
}

}  // namespace tesserine::cli
