#include "cli/When.h"

#include "cli/UsageError.h"

namespace tesserine::cli {

Instant parseWhen(const std::string& typed, const Calendar& calendar) {
    if (const auto instant = Instant::parseISO(typed)) return instant->floorToMillisecond();

    constexpr std::size_t separator = 10;
    std::string local = typed;
    if (local.size() > separator && local[separator] == ' ') local[separator] = 'T';
    const auto time = LocalTime::parseISO(local);
    if (!time) throw UsageError::badArgument(typed, "a time such as “2026-03-14 09:15”");
    return calendar.instant(*time).floorToMillisecond();
}

}  // namespace tesserine::cli
