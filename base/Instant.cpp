#include "base/Instant.h"

#include "base/ISO8601.h"

#include <algorithm>
#include <cmath>

namespace tesserine {
namespace {

using iso8601::putDigits;
using iso8601::Scanner;
using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int64_t millisecondsPerDay = 86'400'000;
constexpr std::int64_t firstMillisecond = -62'167'219'200'000;  // 0000-01-01T00:00:00.000Z
constexpr std::int64_t lastMillisecond = 253'402'300'799'999;   // 9999-12-31T23:59:59.999Z

/// A fraction of a second, as whole milliseconds and what is left below them.
struct Fraction {
    int milliseconds = 0;
    double rest = 0;
};

Fraction readFraction(Scanner& scanner) {
    if (!scanner.startsWith('.')) return {};
    scanner.expect('.');

    Fraction fraction;
    fraction.milliseconds = scanner.digit() * 100;
    if (scanner.startsWithDigit()) fraction.milliseconds += scanner.digit() * 10;
    if (scanner.startsWithDigit()) fraction.milliseconds += scanner.digit();
    double unit = 1e-4;
    while (scanner.startsWithDigit()) {
        fraction.rest += scanner.digit() * unit;
        unit /= 10;
    }
    return fraction;
}

/// Seconds east of UTC.
int readOffset(Scanner& scanner) {
    const bool isUTC = scanner.startsWith('Z');
    const bool isWest = scanner.startsWith('-');
    scanner.expect(isUTC ? 'Z' : isWest ? '-' : '+');
    if (isUTC) return 0;

    const int hours = scanner.number(2, 0, 23);
    scanner.expect(':');
    const int minutes = scanner.number(2, 0, 59);
    const int seconds = hours * 3600 + minutes * 60;
    return isWest ? -seconds : seconds;
}

}  // namespace

Instant Instant::fromMilliseconds(std::int64_t since1970) {
    return Instant(static_cast<double>(since1970) / 1000.0);
}

std::optional<Instant> Instant::parseISO(std::string_view text) {
    Scanner scanner(text);
    const int year = scanner.number(4, 0, 9999);
    scanner.expect('-');
    const int month = scanner.number(2, 1, 12);
    scanner.expect('-');
    const int day = scanner.number(2, 1, 31);
    scanner.expect('T');
    const int hour = scanner.number(2, 0, 23);
    scanner.expect(':');
    const int minute = scanner.number(2, 0, 59);
    scanner.expect(':');
    const int second = scanner.number(2, 0, 59);
    const Fraction fraction = readFraction(scanner);
    const int offset = readOffset(scanner);
    if (!scanner.isDone()) return std::nullopt;

    const std::chrono::year_month_day date{
        std::chrono::year(year),
        std::chrono::month(static_cast<unsigned>(month)),
        std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok()) return std::nullopt;

    const std::int64_t dayCount = sys_days(date).time_since_epoch().count();
    const std::int64_t hours = dayCount * 24 + hour;
    const std::int64_t seconds = (hours * 60 + minute) * 60 + second - offset;
    const Instant whole = fromMilliseconds(seconds * 1000 + fraction.milliseconds);
    return fraction.rest == 0 ? whole : whole + Duration(fraction.rest);
}

std::int64_t Instant::milliseconds() const {
    constexpr double limit = 9.2e18;  // just inside 64 bits
    const double exact = seconds_ * 1000.0;
    if (std::isnan(exact)) return 0;
    return std::llround(std::clamp(exact, -limit, limit));
}

std::string Instant::iso() const {
    const std::int64_t clamped = std::clamp(milliseconds(), firstMillisecond, lastMillisecond);
    std::int64_t dayCount = clamped / millisecondsPerDay;
    auto timeOfDay = static_cast<int>(clamped % millisecondsPerDay);
    if (timeOfDay < 0) {
        timeOfDay += static_cast<int>(millisecondsPerDay);
        --dayCount;
    }

    const std::chrono::year_month_day date{sys_days(days(static_cast<int>(dayCount)))};
    std::string text = "0000-00-00T00:00:00.000Z";
    char* const start = text.data();
    putDigits(start + 4, static_cast<int>(date.year()), 4);
    putDigits(start + 7, static_cast<int>(static_cast<unsigned>(date.month())), 2);
    putDigits(start + 10, static_cast<int>(static_cast<unsigned>(date.day())), 2);
    putDigits(start + 13, timeOfDay / 3'600'000, 2);
    putDigits(start + 16, timeOfDay / 60'000 % 60, 2);
    putDigits(start + 19, timeOfDay / 1000 % 60, 2);
    putDigits(start + 23, timeOfDay % 1000, 3);
    return text;
}

Instant Instant::floorToMillisecond() const {
    if (!(std::abs(seconds_) < 9.2e15)) return *this;
    // The nearest millisecond may lie above; multiplying and rounding down may land one too low.
    const Instant nearest = fromMilliseconds(milliseconds());
    return nearest <= *this ? nearest : fromMilliseconds(milliseconds() - 1);
}

}  // namespace tesserine
