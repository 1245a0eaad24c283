#include "search/QueryDates.h"

#include "base/Text.h"
#include "search/KeyScanner.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

namespace tesserine {

namespace {

/// A hundred years: further back than any note.
constexpr int maximumAgeDays = 36'525;

std::optional<int> number(std::string_view digits, std::size_t longest) {
    const bool areDigits = std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    if (digits.empty() || digits.size() > longest || !areDigits) return std::nullopt;
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

std::vector<std::string_view> partsOf(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (std::size_t end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

/// Reads one date, by the calendar and the day it was handed.
class DateReader {
public:
    DateReader(Instant now, const Calendar& calendar)
        : today_(calendar.startOfDay(now)), calendar_(calendar) {}

    std::optional<DateSpan> read(const std::string& text) const {
        for (const auto reading :
             {&DateReader::named,
              &DateReader::age,
              &DateReader::dayBack,
              &DateReader::numeric,
              &DateReader::slashed,
              &DateReader::monthAndYear}) {
            if (auto span = (this->*reading)(text)) return span;
        }
        return std::nullopt;
    }

private:
    /// "today", "week", "last year" …
    std::optional<DateSpan> named(std::string_view text) const {
        if (text == "today") return days(today_, 1);
        if (text == "yesterday") return days(calendar_.addDays(today_, -1), 1);
        if (text == "tomorrow") return days(calendar_.addDays(today_, 1), 1);
        int away = 0;
        if (text.starts_with("last ") || text.starts_with("last-")) away = -1;
        if (text.starts_with("next ") || text.starts_with("next-")) away = 1;
        if (away != 0) text.remove_prefix(5);
        const LocalTime today = calendar_.local(today_);
        if (text == "week") {
            return days(calendar_.addDays(calendar_.startOfWeek(today_), 7 * away), 7);
        }
        if (text == "month") return monthAway(today, away);
        if (text == "year") return year(today.year + away);
        return std::nullopt;
    }

    /// 7d 3w 2m 1y: the day that long ago.
    std::optional<DateSpan> age(std::string_view text) const {
        if (text.size() < 2) return std::nullopt;
        const auto count = number(text.substr(0, text.size() - 1), 5);
        if (!count || *count > maximumAgeDays) return std::nullopt;
        std::optional<DateSpan> span;
        if (text.back() == 'd') span = days(calendar_.addDays(today_, -*count), 1);
        if (text.back() == 'w' && *count <= maximumAgeDays / 7) {
            span = days(calendar_.addDays(today_, -7 * *count), 1);
        }
        if (text.back() == 'm' && *count <= 1'200) {
            span = days(calendar_.addMonths(today_, -*count), 1);
        }
        if (text.back() == 'y' && *count <= 100) {
            span = days(calendar_.addYears(today_, -*count), 1);
        }
        if (span) span->isAge = true;
        return span;
    }

    /// day-7: that one day.
    std::optional<DateSpan> dayBack(std::string_view text) const {
        if (!text.starts_with("day-")) return std::nullopt;
        const auto count = number(text.substr(4), 5);
        if (!count || *count > maximumAgeDays) return std::nullopt;
        return days(calendar_.addDays(today_, -*count), 1);
    }

    /// 2025, 2025-01, 2025-01-15
    std::optional<DateSpan> numeric(std::string_view text) const {
        const auto parts = partsOf(text, '-');
        if (parts.size() > 3 || parts[0].size() != 4) return std::nullopt;
        const auto yearNumber = number(parts[0], 4);
        if (!yearNumber) return std::nullopt;
        if (parts.size() == 1) return year(*yearNumber);
        const auto monthNumber = number(parts[1], 2);
        if (!monthNumber) return std::nullopt;
        if (parts.size() == 2) return month(*yearNumber, *monthNumber);
        const auto dayNumber = number(parts[2], 2);
        if (!dayNumber) return std::nullopt;
        return day({.year = *yearNumber, .month = *monthNumber, .day = *dayNumber});
    }

    /// 1/15/2025, or 15/1/2025 where that is the only way to read it.
    std::optional<DateSpan> slashed(std::string_view text) const {
        const auto parts = partsOf(text, '/');
        if (parts.size() != 3 || parts[2].size() != 4) return std::nullopt;
        const auto first = number(parts[0], 2);
        const auto second = number(parts[1], 2);
        const auto yearNumber = number(parts[2], 4);
        if (!first || !second || !yearNumber) return std::nullopt;
        if (*first <= 12) return day({.year = *yearNumber, .month = *first, .day = *second});
        return day({.year = *yearNumber, .month = *second, .day = *first});
    }

    /// jan 2025
    std::optional<DateSpan> monthAndYear(std::string_view text) const {
        const std::size_t space = text.find(' ');
        if (space == std::string_view::npos) return std::nullopt;
        const auto monthNumber = KeyScanner::monthNamed(text.substr(0, space));
        const std::string_view digits = text::trimmed(text.substr(space));
        if (!monthNumber || digits.size() != 4) return std::nullopt;
        const auto yearNumber = number(digits, 4);
        if (!yearNumber) return std::nullopt;
        return month(*yearNumber, *monthNumber);
    }

    DateSpan days(Instant begin, int count) const {
        return {.begin = begin, .end = calendar_.addDays(begin, count)};
    }

    std::optional<DateSpan> day(const LocalTime& date) const {
        const bool exists = date.year > 0 && date.month >= 1 && date.month <= 12 && date.day >= 1
                            && date.day <= daysInMonth(date.year, date.month);
        if (!exists) return std::nullopt;
        return days(calendar_.instant(date), 1);
    }

    std::optional<DateSpan> month(int year, int month) const {
        if (year < 1 || month < 1 || month > 12) return std::nullopt;
        const LocalTime next =
            month == 12 ? LocalTime{.year = year + 1} : LocalTime{.year = year, .month = month + 1};
        return DateSpan{
            .begin = calendar_.instant({.year = year, .month = month}),
            .end = calendar_.instant(next),
            .scope = DateScope::month};
    }

    std::optional<DateSpan> monthAway(const LocalTime& today, int away) const {
        const int months = today.year * 12 + today.month - 1 + away;
        return month(months / 12, months % 12 + 1);
    }

    std::optional<DateSpan> year(int year) const {
        if (year < 1) return std::nullopt;
        return DateSpan{
            .begin = calendar_.instant({.year = year}),
            .end = calendar_.instant({.year = year + 1}),
            .scope = DateScope::year};
    }

    Instant today_;  // its first moment
    const Calendar& calendar_;
};

}  // namespace

std::optional<DateSpan> parseQueryDate(
    std::string_view text, Instant now, const Calendar& calendar) {
    return DateReader(now, calendar).read(text::asciiLowercased(text::trimmed(text)));
}

}  // namespace tesserine
