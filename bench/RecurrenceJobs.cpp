#include "bench/RecurrenceJobs.h"

#include "base/Calendar.h"
#include "core/tasks/RecurrenceRule.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <array>
#include <stdexcept>
#include <string>

namespace tesserine::bench {
namespace {

using Unit = RecurrenceRule::Unit;

constexpr std::size_t occurrenceCount = 200'000;

/// A rule, and how a full calendar moves from one of its occurrences to the next.
struct Sample {
    RecurrenceRule rule;
    UCalendarDateFields field;
    int amount;
};

const std::array samples = {
    Sample{{.unit = Unit::day}, UCAL_DATE, 1},
    Sample{{.unit = Unit::day, .interval = 3}, UCAL_DATE, 3},
    Sample{{.unit = Unit::week}, UCAL_DATE, 7},
    Sample{{.unit = Unit::week, .weekdays = {2, 3, 4, 5, 6}}, UCAL_DATE, 1},
    Sample{{.unit = Unit::week, .interval = 2, .weekdays = {2, 5}}, UCAL_DATE, 3},
    Sample{{.unit = Unit::month, .dayOfMonth = 31}, UCAL_MONTH, 1},
    Sample{{.unit = Unit::year, .dayOfMonth = 29, .monthOfYear = 2}, UCAL_YEAR, 1},
};

/// Dates of a few years, an odd number of hours apart.
Instant startOf(std::size_t place) {
    const auto hours = static_cast<double>(place % 5000 * 7);
    return Instant::fromSeconds(1'767'225'600.0 + hours * 3600);
}

double secondsOfFullCalendar(icu::GregorianCalendar& calendar) {
    UErrorCode status = U_ZERO_ERROR;
    double sum = 0;
    const double seconds = secondsOf([&] {
        for (std::size_t i = 0; i < occurrenceCount; ++i) {
            const Sample& sample = samples[i % samples.size()];
            calendar.setTime(startOf(i).seconds() * 1000, status);
            calendar.add(sample.field, sample.amount, status);
            sum += calendar.getTime(status);
        }
    });
    if (U_FAILURE(status) || sum == 0) throw std::runtime_error("the calendar did not work");
    return seconds;
}

double secondsOfRules(const Calendar& calendar) {
    double sum = 0;
    const double seconds = secondsOf([&] {
        for (std::size_t i = 0; i < occurrenceCount; ++i) {
            const RecurrenceRule& rule = samples[i % samples.size()].rule;
            sum += rule.nextOccurrence(startOf(i), calendar).value().seconds();
        }
    });
    if (sum == 0) throw std::runtime_error("no occurrence was found");
    return seconds;
}

Row measure(const std::string& zone, std::size_t wantedPerSecond, std::size_t rounds) {
    const Calendar calendar(zone);
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar full(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)),
        icu::Locale::getRoot(),
        status);
    const Comparison times = alternate(
        rounds,
        [&] { return secondsOfFullCalendar(full); },
        [&] { return secondsOfRules(calendar); });
    const auto text = [](double seconds) { return perSecond(occurrenceCount, seconds); };
    Row row = rowOf("next occurrences, " + zone, times, text);
    row.goal = "≥ " + grouped(wantedPerSecond) + "/s";
    row.isReached =
        static_cast<double>(occurrenceCount) / times.ours >= static_cast<double>(wantedPerSecond);
    return row;
}

}  // namespace

std::vector<Row> recurrenceJobs(std::size_t rounds) {
    return {measure("UTC", 1'000'000, rounds), measure("Europe/Berlin", 300'000, rounds)};
}

}  // namespace tesserine::bench
