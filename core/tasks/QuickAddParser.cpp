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

using namespace quickadd;
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

/// What was found in a sentence.
struct Hits {
    std::optional<NameHit> project{};
    std::vector<NameHit> labels{};
    std::optional<PriorityHit> priority{};
    std::optional<RecurrenceHit> recurrence{};
    std::optional<DateHit> date{};
    std::optional<TimeHit> time{};
};

/// Passes `hit` on, and keeps what is looked for later away from it.
template <class Hit>
std::optional<Hit> taken(std::optional<Hit> hit, Sentence& sentence) {
    if (hit) sentence.take(hit->range);
    return hit;
}

Hits findAll(Sentence& sentence, sys_days today) {
    Hits hits;
    hits.project = taken(findProject(sentence), sentence);
    hits.labels = findLabels(sentence);
    for (const NameHit& label : hits.labels) {
        sentence.take(label.range);
    }
    hits.recurrence = taken(findRecurrence(sentence), sentence);
    if (hits.recurrence) sentence.leaveAlone(hits.recurrence->cutOff);
    hits.date = taken(findDate(sentence, today), sentence);
    hits.time = taken(findTime(sentence), sentence);
    // Last, so that it does not take the 3 of "in 3 weeks".
    hits.priority = taken(findPriority(sentence), sentence);
    return hits;
}

std::vector<RecognisedToken> tokensOf(const Hits& hits, const std::string& sentence) {
    std::vector<RecognisedToken> tokens;
    const auto add = [&](TokenKind kind, const auto& hit) {
        const TextRange range = hit.range;
        tokens.push_back({sentence.substr(range.begin, range.end - range.begin), kind, range});
    };
    if (hits.project) add(TokenKind::project, *hits.project);
    for (const NameHit& label : hits.labels) {
        add(TokenKind::label, label);
    }
    if (hits.priority) add(TokenKind::priority, *hits.priority);
    if (hits.recurrence) add(TokenKind::recurrence, *hits.recurrence);
    if (hits.date) add(TokenKind::date, *hits.date);
    if (hits.time) add(TokenKind::time, *hits.time);
    return tokens;
}

std::optional<TimeOfDay> timeOf(const Hits& hits) {
    if (hits.time) return hits.time->components;
    return hits.date ? hits.date->impliedTime : std::nullopt;
}

}  // namespace

QuickAddResult QuickAddParser::parse(
    std::string_view typed, std::span<const TextRange> leftAlone) const {
    if (typed.size() > longestSentence) {
        return {.title = text::collapsed(typed), .sentence = std::string(typed)};
    }
    Sentence sentence(typed, leftAlone);
    const Hits hits = findAll(sentence, dayOf(calendar_.local(now_)));

    QuickAddResult result{.title = sentence.title(), .sentence = sentence.text()};
    result.recognisedTokens = tokensOf(hits, sentence.text());
    if (hits.project) result.projectName = hits.project->name;
    for (const NameHit& label : hits.labels) {
        result.labels.push_back(label.name);
    }
    if (hits.priority) result.priority = hits.priority->priority;
    if (hits.recurrence) result.recurrence = hits.recurrence->rule;
    result.dueTime = timeOf(hits);
    result.dueHasTime = result.dueTime.has_value();
    if (hits.date) {
        result.dueDate = instantOf(hits.date->date, result.dueTime, calendar_);
    } else if (hits.time && !hits.recurrence) {
        result.dueDate = nextTime(hits.time->components, now_, calendar_);
    }
    return result;
}

}  // namespace tesserine
