#include "core/tasks/QuickAddRecurrence.h"

#include "base/Text.h"
#include "core/tasks/QuickAddNames.h"

#include <set>
#include <utility>

namespace tesserine::quickadd {
namespace {

using Unit = RecurrenceRule::Unit;
using MaybeRecurrence = std::optional<RecurrenceHit>;

constexpr int mostUnits = 999;

/// The rule that the word behind "every" stands for.
RecurrenceRule ruleOf(std::string_view word) {
    const std::string name = text::caseFolded(word);
    if (const auto weekday = weekdayNumber(name)) {
        return {.unit = Unit::week, .weekdays = {*weekday}};
    }
    if (name.starts_with("weekday")) return {.unit = Unit::week, .weekdays = {2, 3, 4, 5, 6}};
    if (name.starts_with("day")) return {.unit = Unit::day};
    if (name.starts_with("week")) return {.unit = Unit::week};
    if (name.starts_with("month")) return {.unit = Unit::month};
    return {.unit = Unit::year};
}

/// Groups of the pattern of "every".
enum Group : std::size_t { interval = 1, word, lastWeekday, dayOfMonth };

const Pattern& everyPattern() {
    static const Pattern pattern(
        R"x((?:^|\s)every\s+(?:(\d+)\s+)?()x"
        "weekdays|weekday|days|day|weeks|week|months|month|years|year|"
            + weekdayAlternation() + R"x()(?:s)?(?:(?:\s*,\s*|\s+and\s+|\s+)()x"
            + weekdayAlternation() + R"x())*(?:\s+on\s+the\s+(\d{1,2})(?:st|nd|rd|th)?)?)x",
        "every");
    return pattern;
}

std::size_t endOfFirstWord(const Found& found) {
    const std::size_t end = found.range(word).end;
    const auto rest = found.sentence().substr(end);
    return rest.starts_with('s') || rest.starts_with('S') ? end + 1 : end;
}

/// A repeated group keeps its last turn only, so the names are looked for once more.
void addWeekdays(std::set<int>& weekdays, std::string_view names) {
    static const Regex name(weekdayAlternation(), Regex::Case::insensitive);
    name.forEach(names, [&](const Regex::Match& match) {
        weekdays.insert(weekdayNumber(match.group(names, 0)).value());
        return true;
    });
}

/// What stands behind the first word counts where it fits the unit; the match ends before what does
/// not: "every day sun hat" is every day.
MaybeRecurrence everyHit(const Found& found) {
    RecurrenceRule rule = ruleOf(found.text(word));
    rule.interval = found.has(interval) ? found.number(interval) : 1;
    if (rule.interval < 1 || rule.interval > mostUnits) return std::nullopt;

    const std::size_t endOfWord = endOfFirstWord(found);
    const auto hit = [&](std::size_t end) { return RecurrenceHit{rule, found.rangeUntil(end)}; };
    if (found.has(lastWeekday)) {
        const TextRange weekdays{endOfWord, found.range(lastWeekday).end};
        if (rule.unit != Unit::week) {
            RecurrenceHit cut = hit(endOfWord);
            cut.cutOff = weekdays;
            return cut;
        }
        addWeekdays(rule.weekdays, found.sentence().substr(endOfWord, weekdays.end - endOfWord));
        return hit(weekdays.end);
    }
    const bool isMonthly = rule.unit == Unit::month || rule.unit == Unit::year;
    const int day = found.number(dayOfMonth);
    if (!isMonthly || day < 1 || day > 31) return hit(endOfWord);
    rule.dayOfMonth = day;
    return hit(found.range().end);
}

MaybeRecurrence keywordHit(const Found& found) {
    const std::string name = text::caseFolded(found.text(1));
    RecurrenceRule rule{.unit = Unit::year};
    if (name == "daily") rule.unit = Unit::day;
    if (name == "weekly") rule.unit = Unit::week;
    if (name == "monthly") rule.unit = Unit::month;
    return RecurrenceHit{std::move(rule), found.range()};
}

}  // namespace

std::optional<RecurrenceHit> findRecurrence(const Sentence& sentence) {
    static const Pattern keywords(
        R"((?:^|\s)(daily|weekly|monthly|yearly|annually)\b)",
        "daily|weekly|monthly|yearly|annually");
    if (auto hit = sentence.first(everyPattern(), everyHit)) return hit;
    return sentence.first(keywords, keywordHit);
}

}  // namespace tesserine::quickadd
