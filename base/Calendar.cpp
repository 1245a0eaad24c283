#include "base/Calendar.h"

#include "base/EnglishNames.h"
#include "base/ISO8601.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <stdexcept>

namespace tesserine {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int64_t dayMilliseconds = 86'400'000;
/// Calendar arithmetic covers the years the standard calendar types hold, and stops at their ends.
constexpr int firstYear = -30'000;
constexpr int lastYear = 30'000;
constexpr std::int64_t firstCounted = -900'000'000'000'000;
constexpr std::int64_t lastCounted = 900'000'000'000'000;

std::chrono::year_month_day dateOf(int year, int month, int day) {
    return {
        std::chrono::year(std::clamp(year, firstYear, lastYear)),
        std::chrono::month(static_cast<unsigned>(month)),
        std::chrono::day(static_cast<unsigned>(day))};
}

std::int64_t dayNumber(const LocalTime& local) {
    return sys_days(dateOf(local.year, local.month, local.day)).time_since_epoch().count();
}

/// The wall-clock fields as if the zone were UTC.
std::int64_t wallMilliseconds(const LocalTime& local) {
    const std::int64_t seconds = local.hour * 3600 + local.minute * 60 + local.second;
    return dayNumber(local) * dayMilliseconds + seconds * 1000 + local.millisecond;
}

void setDate(LocalTime& local, std::int64_t dayNumber) {
    const std::chrono::year_month_day date{sys_days(days(static_cast<int>(dayNumber)))};
    local.year = static_cast<int>(date.year());
    local.month = static_cast<int>(static_cast<unsigned>(date.month()));
    local.day = static_cast<int>(static_cast<unsigned>(date.day()));
}

LocalTime fieldsOf(std::int64_t wallMilliseconds) {
    std::int64_t day = wallMilliseconds / dayMilliseconds;
    std::int64_t rest = wallMilliseconds % dayMilliseconds;
    if (rest < 0) {
        rest += dayMilliseconds;
        --day;
    }

    LocalTime local;
    setDate(local, day);
    local.hour = static_cast<int>(rest / 3'600'000);
    local.minute = static_cast<int>(rest / 60'000 % 60);
    local.second = static_cast<int>(rest / 1000 % 60);
    local.millisecond = static_cast<int>(rest % 1000);
    return local;
}

std::int64_t clampedMilliseconds(Instant instant) {
    return std::clamp(instant.floorToMillisecond().milliseconds(), firstCounted, lastCounted);
}

LocalTime atMidnight(LocalTime local) {
    return {.year = local.year, .month = local.month, .day = local.day};
}

/// 1 = Sunday; day 0 was a Thursday.
int weekdayOf(std::int64_t dayNumber) {
    constexpr int thursday = 5;
    return static_cast<int>(((dayNumber + thursday - 1) % 7 + 7) % 7) + 1;
}

std::string textOf(const icu::UnicodeString& name) {
    std::string text;
    return name.toUTF8String(text);
}

}  // namespace

/// One zone's rules. Asking for offsets changes nothing in it, so threads may share it.
struct Calendar::Zone {
    std::string name;
    std::unique_ptr<icu::BasicTimeZone> rules;  // every zone of the database is one of these

    std::int64_t offsetAt(std::int64_t millisecondsUTC) const {
        std::int32_t raw = 0;
        std::int32_t saving = 0;
        UErrorCode status = U_ZERO_ERROR;
        rules->getOffset(static_cast<UDate>(millisecondsUTC), false, raw, saving, status);
        return std::int64_t{raw} + saving;
    }

    /// The offset to take off wall-clock time: inside a gap and inside an overlap, the one before.
    std::int64_t offsetAtWall(std::int64_t wallMilliseconds) const {
        std::int32_t raw = 0;
        std::int32_t saving = 0;
        UErrorCode status = U_ZERO_ERROR;
        rules->getOffsetFromLocal(
            static_cast<UDate>(wallMilliseconds),
            UCAL_TZ_LOCAL_FORMER,
            UCAL_TZ_LOCAL_FORMER,
            raw,
            saving,
            status);
        return std::int64_t{raw} + saving;
    }
};

std::string LocalTime::iso() const {
    std::string text = "0000-00-00T00:00:00";
    char* const start = text.data();
    iso8601::putDigits(start + 4, std::clamp(year, 0, 9999), 4);
    iso8601::putDigits(start + 7, month, 2);
    iso8601::putDigits(start + 10, day, 2);
    iso8601::putDigits(start + 13, hour, 2);
    iso8601::putDigits(start + 16, minute, 2);
    iso8601::putDigits(start + 19, second, 2);
    return text;
}

std::optional<LocalTime> LocalTime::parseISO(std::string_view text) {
    iso8601::Scanner scanner(text);
    LocalTime local;
    local.year = scanner.number(4, 0, 9999);
    scanner.expect('-');
    local.month = scanner.number(2, 1, 12);
    scanner.expect('-');
    local.day = scanner.number(2, 1, 31);
    scanner.expect('T');
    local.hour = scanner.number(2, 0, 23);
    scanner.expect(':');
    local.minute = scanner.number(2, 0, 59);
    if (scanner.startsWith(':')) {
        scanner.expect(':');
        local.second = scanner.number(2, 0, 59);
    }
    if (!scanner.isDone()) return std::nullopt;
    if (!dateOf(local.year, local.month, local.day).ok()) return std::nullopt;
    return local;
}

Calendar::Calendar(const std::string& zone, int firstWeekday) : firstWeekday_(firstWeekday) {
    assert(firstWeekday >= 1 && firstWeekday <= 7 && "weekdays count from 1 to 7");
    if (!isZone(zone)) throw std::invalid_argument("There is no time zone “" + zone + "”.");

    std::unique_ptr<icu::TimeZone> made(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
    auto* const rules = dynamic_cast<icu::BasicTimeZone*>(made.get());
    if (rules == nullptr) throw std::invalid_argument("The time zone “" + zone + "” has no rules.");
    static_cast<void>(made.release());  // owned by the zone from here on
    zone_ = std::make_shared<const Zone>(
        Zone{.name = zone, .rules = std::unique_ptr<icu::BasicTimeZone>(rules)});
}

bool Calendar::isZone(const std::string& zone) {
    // Only zones of the database have a region; "GMT+3" and the like are made up on the spot.
    std::array<char, 8> region{};
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getRegion(
        icu::UnicodeString::fromUTF8(zone),
        region.data(),
        static_cast<std::int32_t>(region.size()),
        status);
    return U_SUCCESS(status) && zone != "Etc/Unknown";
}

std::string Calendar::systemZone() {
    const std::unique_ptr<icu::TimeZone> host(icu::TimeZone::detectHostTimeZone());
    icu::UnicodeString name;
    if (host != nullptr) host->getID(name);
    const std::string zone = textOf(name);
    return isZone(zone) ? zone : "UTC";
}

const std::string& Calendar::zone() const { return zone_->name; }

int Calendar::firstWeekday() const { return firstWeekday_; }

LocalTime Calendar::local(Instant instant) const {
    const std::int64_t milliseconds = clampedMilliseconds(instant);
    return fieldsOf(milliseconds + zone_->offsetAt(milliseconds));
}

Instant Calendar::instant(const LocalTime& local) const {
    const std::int64_t wall = wallMilliseconds(local);
    return Instant::fromMilliseconds(wall - zone_->offsetAtWall(wall));
}

int Calendar::weekday(Instant instant) const { return weekdayOf(dayNumber(local(instant))); }

Instant Calendar::startOfDay(Instant instant) const {
    return this->instant(atMidnight(local(instant)));
}

Instant Calendar::startOfWeek(Instant instant) const {
    LocalTime midnight = atMidnight(local(instant));
    const std::int64_t day = dayNumber(midnight);
    setDate(midnight, day - (weekdayOf(day) - firstWeekday_ + 7) % 7);
    return this->instant(midnight);
}

Instant Calendar::startOfMonth(Instant instant) const {
    LocalTime midnight = atMidnight(local(instant));
    midnight.day = 1;
    return this->instant(midnight);
}

Instant Calendar::addDays(Instant instant, int days) const {
    // The second of two equal wall-clock times would become the first.
    if (days == 0) return instant;
    LocalTime moved = local(instant);
    const std::int64_t day = dayNumber(moved) + days;
    setDate(moved, std::clamp(day, firstCounted / dayMilliseconds, lastCounted / dayMilliseconds));
    return this->instant(moved);
}

Instant Calendar::addMonths(Instant instant, int months) const {
    if (months == 0) return instant;
    LocalTime moved = local(instant);
    const std::int64_t month = std::int64_t{moved.year} * 12 + (moved.month - 1) + months;
    const std::int64_t year = month >= 0 ? month / 12 : (month - 11) / 12;
    moved.month = static_cast<int>(month - year * 12) + 1;
    moved.year = static_cast<int>(std::clamp<std::int64_t>(year, firstYear, lastYear));
    moved.day = std::min(moved.day, daysInMonth(moved.year, moved.month));
    return this->instant(moved);
}

Instant Calendar::addYears(Instant instant, int years) const {
    constexpr int mostYears = 2 * lastYear;
    return addMonths(instant, std::clamp(years, -mostYears, mostYears) * 12);
}

bool Calendar::isSameDay(Instant a, Instant b) const { return daysBetween(a, b) == 0; }

int Calendar::daysBetween(Instant from, Instant to) const {
    return static_cast<int>(dayNumber(local(to)) - dayNumber(local(from)));
}

std::string Calendar::longDate(Instant instant) const {
    const LocalTime date = local(instant);
    return std::to_string(date.day) + " " + std::string(english::monthName(date.month)) + " "
           + std::to_string(date.year);
}

int daysInMonth(int year, int month) {
    const std::chrono::year_month_day_last last{
        std::chrono::year(std::clamp(year, firstYear, lastYear)),
        std::chrono::month_day_last(std::chrono::month(static_cast<unsigned>(month)))};
    return static_cast<int>(static_cast<unsigned>(last.day()));
}

}  // namespace tesserine
