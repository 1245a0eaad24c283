#include "sync/SyncRetryPolicy.h"

#include "base/Text.h"

#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace tesserine {
namespace {

bool isDecimal(std::string_view text) {
    const std::size_t point = std::min(text.find('.'), text.size());
    const auto isDigits = [](std::string_view part) {
        return !part.empty() && part.find_first_not_of("0123456789") == std::string_view::npos;
    };
    return isDigits(text.substr(0, point))
           && (point == text.size() || isDigits(text.substr(point + 1)));
}

Seconds decimalSeconds(std::string_view text) {
    double seconds = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isBeyondDoubles = problem == std::errc::result_out_of_range;
    return Seconds(isBeyondDoubles ? std::numeric_limits<double>::max() : seconds);
}

std::optional<Instant> httpDate(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    icu::SimpleDateFormat format(
        "EEE, dd MMM yyyy HH:mm:ss zzz", icu::Locale("en", "US", "POSIX"), status);
    if (U_FAILURE(status)) return std::nullopt;
    format.setLenient(false);
    const auto wide = icu::UnicodeString::fromUTF8(std::string(text));
    icu::ParsePosition position(0);
    const UDate milliseconds = format.parse(wide, position);
    const bool isWhole = position.getErrorIndex() < 0 && position.getIndex() == wide.length();
    if (!isWhole || !std::isfinite(milliseconds)) return std::nullopt;
    return Instant::fromSeconds(milliseconds / 1000.0);
}

}  // namespace

bool SyncRetryPolicy::allows(const SyncError& error, int retries) const {
    return retries < attempts && error.isRetryable();
}

Seconds SyncRetryPolicy::delay(
    int retries, std::optional<Seconds> retryAfter, Random& random) const {
    if (retryAfter) return std::min(*retryAfter, retryAfterCap);
    const Seconds full = std::min(Seconds(std::ldexp(baseDelay.count(), retries)), ceiling);
    if (!jitter) return full;
    constexpr std::uint64_t steps = std::uint64_t{1} << 32;
    const double share = static_cast<double>(random.below(steps + 1)) / static_cast<double>(steps);
    return full / 2 + full / 2 * share;
}

std::optional<Seconds> parseRetryAfter(std::string_view header, Instant now) {
    const std::string_view value = text::trimmed(header);
    if (value.empty()) return std::nullopt;
    if (isDecimal(value)) return decimalSeconds(value);
    const auto date = httpDate(value);
    if (!date) return std::nullopt;
    return std::max(Seconds(*date - now), Seconds(0));
}

}  // namespace tesserine
