#include "cli/TaskInput.h"

#include "cli/Session.h"
#include "cli/When.h"
#include "core/tasks/QuickAddParser.h"

#include <algorithm>

namespace tesserine::cli {

namespace {

constexpr std::string_view none = "none";

QuickAddResult parsed(Session& session, const std::string& typed) {
    return QuickAddParser(session.now(), session.calendar()).parse(typed);
}

}  // namespace

std::optional<TaskDue> parseDue(Session& session, const std::string& typed) {
    if (typed == none) return std::nullopt;
    if (const auto day = LocalTime::parseISO(typed + "T00:00")) {
        return TaskDue{.date = session.calendar().instant(*day)};
    }
    const QuickAddResult words = parsed(session, typed);
    const bool saysMore = std::ranges::any_of(words.recognisedTokens, [](const auto& token) {
        return token.kind != TokenKind::date && token.kind != TokenKind::time;
    });
    if (words.title.empty() && words.dueDate && !saysMore) {
        return TaskDue{.date = *words.dueDate, .hasTime = words.dueHasTime};
    }
    return TaskDue{.date = parseWhen(typed, session.calendar()), .hasTime = true};
}

std::optional<Instant> parseReminder(Session& session, const std::string& typed) {
    const auto due = parseDue(session, typed);
    return due ? std::optional(due->date) : std::nullopt;
}

std::optional<RecurrenceRule> parseRepeat(Session& session, const std::string& typed) {
    if (typed == none) return std::nullopt;
    const QuickAddResult words = parsed(session, typed);
    const bool isRuleAlone = words.recurrence && words.recognisedTokens.size() == 1;
    if (isRuleAlone && words.title.empty()) return words.recurrence;
    throw UsageError::badArgument(typed, "a rule such as “every 2 weeks mon, thu”");
}

TaskPriority parsePriority(const std::string& typed) {
    std::string_view digit = typed;
    if (digit.starts_with('p') || digit.starts_with('P')) digit.remove_prefix(1);
    const bool isPriority = digit.size() == 1 && digit[0] >= '1' && digit[0] <= '4';
    if (!isPriority) throw UsageError::badArgument(typed, "a priority from 1 to 4");
    return taskPriority(digit[0] - '0');
}

Instant parseDay(Session& session, const std::string& typed) {
    if (const auto firstOfMonth = LocalTime::parseISO(typed + "-01T00:00")) {
        return session.calendar().instant(*firstOfMonth);
    }
    const auto due = parseDue(session, typed);
    if (!due) throw UsageError::badArgument(typed, "a day such as 2026-03-14");
    return due->date;
}

}  // namespace tesserine::cli
