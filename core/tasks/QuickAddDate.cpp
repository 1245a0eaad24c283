#include "core/tasks/QuickAddDate.h"

#include "base/Calendar.h"
#include "base/Text.h"
#include "core/tasks/QuickAddNames.h"

#include <algorithm>
#include <array>

namespace tesserine::quickadd {
namespace {

using std::chrono::days;
using std::chrono::months;
using std::chrono::sys_days;
using std::chrono::year_month_day;
using MaybeDate = std::optional<DateHit>;

/// Years a sentence can name; other numbers are amounts.
constexpr int firstYear = 1900;
constexpr int lastYear = 2199;

bool isYear(int number) { return number >= firstYear && number <= lastYear; }

/// None for a day that its month does not have.
std::optional<sys_days> dayOf(int year, int month, int day) {
    const year_month_day date{
        std::chrono::year(year),
        std::chrono::month(static_cast<unsigned>(month)),
        std::chrono::day(static_cast<unsigned>(day))};
    return date.ok() ? std::optional<sys_days>(date) : std::nullopt;
}

/// That day of this year, or of the next when it has passed this year.
std::optional<sys_days> comingDay(int month, int day, sys_days today) {
    const int year = static_cast<int>(year_month_day(today).year());
    const auto thisYear = dayOf(year, month, day);
    return thisYear && *thisYear >= today ? thisYear : dayOf(year + 1, month, day);
}

/// The same day of another month, or that month's last day when it is shorter.
sys_days plusMonths(sys_days day, int count) {
    year_month_day moved = year_month_day(day) + months(count);
    if (!moved.ok()) moved = moved.year() / moved.month() / std::chrono::last;
    return moved;
}

MaybeDate hit(std::optional<sys_days> date, TextRange range) {
    if (!date) return std::nullopt;
    return DateHit{.date = *date, .range = range};
}

MaybeDate isoDate(const Sentence& sentence, sys_days) {
    static const Pattern pattern(R"x((?:^|\s)(\d{4})-(\d{1,2})-(\d{1,2})\b)x", "0");
    return sentence.first(pattern, [](const Found& found) -> MaybeDate {
        if (!isYear(found.number(1))) return std::nullopt;
        return hit(dayOf(found.number(1), found.number(2), found.number(3)), found.range());
    });
}

struct RelativeDay {
    Pattern pattern;
    days offset;
    std::optional<TimeOfDay> impliedTime{};
};

MaybeDate relativeDay(const Sentence& sentence, sys_days today) {
    static const std::array<RelativeDay, 5> words = {
        RelativeDay{Pattern::word("today"), days(0)},
        RelativeDay{Pattern::word("tonight"), days(0), TimeOfDay{.hour = 19}},
        RelativeDay{Pattern::word("tomorrow"), days(1)},
        RelativeDay{Pattern::word("tmrw"), days(1)},
        RelativeDay{Pattern::word("tmw"), days(1)},
    };
    for (const RelativeDay& word : words) {
        const auto date = sentence.first(word.pattern, [&](const Found& found) -> MaybeDate {
            return DateHit{today + word.offset, found.range(), word.impliedTime};
        });
        if (date) return date;
    }
    return std::nullopt;
}

MaybeDate numericDate(const Sentence& sentence, sys_days today) {
    static const Pattern pattern(R"x((?:^|\s)(\d{1,2})/(\d{1,2})(?:/(\d{2,4}))?\b)x", "0");
    return sentence.first(pattern, [&](const Found& found) -> MaybeDate {
        const int month = found.number(1);
        const int day = found.number(2);
        if (!found.has(3)) return hit(comingDay(month, day, today), found.range());
        const int number = found.number(3);
        const int year = number < 100 ? number + 2000 : number;
        return isYear(year) ? hit(dayOf(year, month, day), found.range()) : std::nullopt;
    });
}

/// A day of a named month, whose year, if any, is group 3.
MaybeDate namedDay(const Found& found, std::string_view monthName, int day, sys_days today) {
    const int month = monthNumber(monthName).value_or(0);
    if (!found.has(3)) return hit(comingDay(month, day, today), found.range());
    if (isYear(found.number(3))) return hit(dayOf(found.number(3), month, day), found.range());

    // "mar 5, 1500 words" is 5 March.
    TextRange range = found.rangeUntil(found.range(3).begin);
    if (found.sentence()[range.end - 1] == ',') --range.end;
    return hit(comingDay(month, day, today), range);
}

MaybeDate monthFirst(const Sentence& sentence, sys_days today) {
    static const Pattern pattern(
        R"x((?:^|\s)()x" + monthAlternation()
            + R"x()\.?\s+(\d{1,2})(?:st|nd|rd|th)?(?:,?\s*(\d{4}))?\b)x",
        monthAlternation());
    return sentence.first(pattern, [&](const Found& found) -> MaybeDate {
        return namedDay(found, found.text(1), found.number(2), today);
    });
}

MaybeDate dayFirst(const Sentence& sentence, sys_days today) {
    static const Pattern pattern(
        R"x((?:^|\s)(\d{1,2})(?:st|nd|rd|th)?\s+()x" + monthAlternation()
            + R"x()\.?(?:,?\s*(\d{4}))?\b)x",
        monthAlternation());
    return sentence.first(pattern, [&](const Found& found) -> MaybeDate {
        return namedDay(found, found.text(2), found.number(1), today);
    });
}

MaybeDate relativeOffset(const Sentence& sentence, sys_days today) {
    static const Pattern pattern(
        R"((?:^|\s)in\s+(\d{1,3})\s+(day|days|week|weeks|month|months|year|years)\b)", "in");
    return sentence.first(pattern, [&](const Found& found) -> MaybeDate {
        const int count = found.number(1);
        if (count == 0) return std::nullopt;
        switch (text::caseFolded(found.text(2)).front()) {
        case 'd': return hit(today + days(count), found.range());
        case 'w': return hit(today + days(7 * count), found.range());
        case 'm': return hit(plusMonths(today, count), found.range());
        default: return hit(plusMonths(today, 12 * count), found.range());
        }
    });
}

MaybeDate nextWeekOrMonth(const Sentence& sentence, sys_days today) {
    static const Pattern week(R"((?:^|\s)next\s+week\b)", "next");
    static const Pattern month(R"((?:^|\s)next\s+month\b)", "next");
    const auto date = sentence.first(
        week, [&](const Found& found) { return hit(today + days(7), found.range()); });
    if (date) return date;
    return sentence.first(
        month, [&](const Found& found) { return hit(plusMonths(today, 1), found.range()); });
}

MaybeDate weekday(const Sentence& sentence, sys_days today) {
    static const Pattern pattern(
        R"x((?:^|\s)(?:(this|next)\s+)?()x" + weekdayAlternation() + R"x()\b)x",
        weekdayAlternation());
    return sentence.first(pattern, [&](const Found& found) -> MaybeDate {
        const std::chrono::weekday wanted(static_cast<unsigned>(*weekdayNumber(found.text(2)) - 1));
        days ahead = wanted - std::chrono::weekday(today);
        const bool isThis = text::caseFolded(found.text(1)) == "this";
        const bool isNext = found.has(1) && !isThis;
        if (isNext || (ahead == days(0) && !isThis)) ahead += days(7);
        return hit(today + ahead, found.range());
    });
}

}  // namespace

std::optional<DateHit> findDate(const Sentence& sentence, sys_days today) {
    static constexpr auto forms = std::to_array<MaybeDate (*)(const Sentence&, sys_days)>({
        isoDate,
        relativeDay,
        numericDate,
        monthFirst,
        dayFirst,
        relativeOffset,
        nextWeekOrMonth,
        weekday,
    });
    for (const auto form : forms) {
        if (const auto date = form(sentence, today)) return date;
    }
    return std::nullopt;
}

}  // namespace tesserine::quickadd
