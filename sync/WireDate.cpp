#include "sync/WireDate.h"

#include <algorithm>

namespace tesserine::wire {

std::string formatDate(Instant instant) { return instant.iso(); }

std::optional<Instant> parseDate(std::string_view text) {
    constexpr std::size_t longestFraction = 9;
    const std::size_t point = text.find('.');
    if (point != std::string_view::npos) {
        const std::size_t end = text.find_first_not_of("0123456789", point + 1);
        const std::size_t digits = std::min(end, text.size()) - point - 1;
        if (digits > longestFraction) return std::nullopt;
    }
    return Instant::parseISO(text);
}

}  // namespace tesserine::wire
