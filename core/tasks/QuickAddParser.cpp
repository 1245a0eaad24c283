#include "core/tasks/QuickAddParser.h"

#include "base/Text.h"
#include "core/tasks/QuickAddDate.h"
#include "core/tasks/QuickAddMarks.h"
#include "core/tasks/QuickAddRecurrence.h"
#include "core/tasks/QuickAddSentence.h"
#include "core/tasks/QuickAddTime.h"

#include <chrono>

namespace tesserine {
namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

sys_days dayOf(const LocalTime& local) {
    return year_month_day(
        std::chrono::year(local.year),
        std::chrono::month(static_cast<unsigned>(local.month)),
        std::chrono::day(static_cast<unsigned>(local.day)));
}

/// Without a time, the start of the day.
Instant instantOf(sys_days day, std::optional<TimeOfDay> time, const Calendar& calendar) {
    const year_month_day date(day);
    const TimeOfDay clock = time.value_or(TimeOfDay{});
    return calendar.instant({
        .year = static_cast<int>(date.year()),
        .month = static_cast<int>(static_cast<unsigned>(date.month())),
        .day = static_cast<int>(static_cast<unsigned>(date.day())),
        .hour = clock.hour,
        .minute = clock.minute,
    });
}

/// Today at that time, or tomorrow when it is not ahead any more.
Instant nextTime(TimeOfDay time, Instant now, const Calendar& calendar) {
    const sys_days today = dayOf(calendar.local(now));
    const Instant due = instantOf(today, time, calendar);
    return due > now ? due : instantOf(today + std::chrono::days(1), time, calendar);
}

/// Passes `hit` on, and keeps what is looked for later away from it.
template <class Hit>
std::optional<Hit> take(std::optional<Hit> hit, quickadd::Sentence& sentence) {
    if (hit) sentence.take(hit->range);
    return hit;
}

}  // namespace

QuickAddResult QuickAddParser::parse(
    std::string_view typed, std::span<const TextRange> leftAlone) const {
    if (typed.size() > longestSentence) {
        return {.title = text::collapsed(typed), .sentence = std::string(typed)};
    }
    quickadd::Sentence sentence(typed, leftAlone);
    const sys_days today = dayOf(calendar_.local(now_));

    const auto project = take(quickadd::findProject(sentence), sentence);
    const auto labels = quickadd::findLabels(sentence);
    for (const quickadd::NameHit& label : labels) {
        sentence.take(label.range);
    }
    const auto recurrence = take(quickadd::findRecurrence(sentence), sentence);
    if (recurrence) sentence.leaveAlone(recurrence->cutOff);
    const auto date = take(quickadd::findDate(sentence, today), sentence);
    const auto time = take(quickadd::findTime(sentence), sentence);
    // Last, because any digit may be one, but reported before the three above.
    const auto priority = take(quickadd::findPriority(sentence), sentence);

    QuickAddResult result{.title = sentence.title(), .sentence = sentence.text()};
    const auto report = [&](TokenKind kind, TextRange range) {
        const auto length = range.end - range.begin;
        result.recognisedTokens.push_back(
            {sentence.text().substr(range.begin, length), kind, range});
    };
    if (project) {
        result.projectName = project->name;
        report(TokenKind::project, project->range);
    }
    for (const quickadd::NameHit& label : labels) {
        result.labels.push_back(label.name);
        report(TokenKind::label, label.range);
    }
    if (priority) {
        result.priority = priority->priority;
        report(TokenKind::priority, priority->range);
    }
    if (recurrence) {
        result.recurrence = recurrence->rule;
        report(TokenKind::recurrence, recurrence->range);
    }
    if (date) {
        result.dueTime = date->impliedTime;
        report(TokenKind::date, date->range);
    }
    if (time) {
        result.dueTime = time->components;
        report(TokenKind::time, time->range);
    }
    result.dueHasTime = result.dueTime.has_value();
    if (date) {
        result.dueDate = instantOf(date->date, result.dueTime, calendar_);
    } else if (time && !recurrence) {
        result.dueDate = nextTime(time->components, now_, calendar_);
    }
    return result;
}

}  // namespace tesserine
