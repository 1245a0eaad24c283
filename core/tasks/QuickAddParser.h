#pragma once

#include "base/Calendar.h"
#include "base/Instant.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/RecurrenceRule.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine {

/// What a piece of a sentence was recognised as.
enum class TokenKind { date, time, priority, project, label, recurrence };

/// "date", "time", "priority", "project", "label", "recurrence"
constexpr std::string_view rawValue(TokenKind kind) {
    switch (kind) {
    case TokenKind::date: return "date";
    case TokenKind::time: return "time";
    case TokenKind::priority: return "priority";
    case TokenKind::project: return "project";
    case TokenKind::label: return "label";
    case TokenKind::recurrence: return "recurrence";
    }
    return {};
}

/// Bytes `begin` up to `end`, not included, of a sentence.
struct TextRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    friend bool operator==(const TextRange&, const TextRange&) = default;
};

/// A recognised piece: its text without white space around it, and where that stands in
/// `QuickAddResult::sentence`.
struct RecognisedToken {
    std::string text;
    TokenKind kind = TokenKind::date;
    TextRange range{};
};

/// A time on the clock, to the minute.
struct TimeOfDay {
    int hour = 0;
    int minute = 0;

    friend bool operator==(const TimeOfDay&, const TimeOfDay&) = default;
};

/// What a typed sentence says about a task.
struct QuickAddResult {
    /// The sentence without its recognised tokens, its words joined by single spaces; may be empty.
    std::string title;
    /// The day at its time of day, or the start of the day. A sentence with a rule and no date has
    /// none: which day a rule begins on is up to who makes the task.
    std::optional<Instant> dueDate;
    /// Whether a time of day was recognised or implied.
    bool dueHasTime = false;
    std::optional<TaskPriority> priority;
    std::optional<std::string> projectName;
    /// Every label, in the order of the sentence.
    std::vector<std::string> labels;
    std::optional<RecurrenceRule> recurrence;
    /// In the order of recognition: project, labels, priority, recurrence, date, time.
    std::vector<RecognisedToken> recognisedTokens;

    /// The time of day, also where no date is known to combine it with.
    std::optional<TimeOfDay> dueTime;
    /// The sentence as it was read: in composed form (NFC), with straight quotes around names. The
    /// same bytes as the sentence given, unless that was written otherwise.
    std::string sentence;
};

/// Turns one typed English sentence, such as "Send invoice tomorrow 9am #Work p1", into the fields
/// of a new task. What is not recognised stays in the title; there are no errors.
///
/// A value: it looks at nothing but what it holds. May be used from several threads.
class QuickAddParser {
public:
    /// Longer sentences, in bytes, are taken as a title without tokens: a pasted text is no
    /// sentence, and looking for tokens in it would not answer at once.
    static constexpr std::size_t longestSentence = 4096;

    /// Dates are counted from `now` in the zone of `calendar`.
    QuickAddParser(Instant now, Calendar calendar) : now_(now), calendar_(std::move(calendar)) {}

    /// `typed` is UTF-8 without U+0000. A token that overlaps one of the ranges `leftAlone`
    /// stays in the title, so that a person can turn a token back into text; those ranges are
    /// places in `QuickAddResult::sentence`.
    QuickAddResult parse(std::string_view typed, std::span<const TextRange> leftAlone = {}) const;

private:
    Instant now_;
    Calendar calendar_;
};

}  // namespace tesserine
