#pragma once

#include "core/tasks/TaskService.h"

#include <optional>
#include <string>

/// What people type about tasks. All throw `UsageError`.
namespace tesserine::cli {

class Session;

/// When something is due: a day ("2026-03-14"), a time as `parseWhen` reads it, or words of a
/// quick-add sentence ("tomorrow 9am"); "none" is never.
std::optional<TaskDue> parseDue(Session& session, const std::string& typed);
/// A reminder, in the same words; "none" is none. A day alone means its first moment.
std::optional<Instant> parseReminder(Session& session, const std::string& typed);
/// A rule in words of a quick-add sentence ("every 2 weeks mon, thu"); "none" is none.
std::optional<RecurrenceRule> parseRepeat(Session& session, const std::string& typed);
/// "1" to "4", or "P1" to "P4".
TaskPriority parsePriority(const std::string& typed);
/// A day to show a calendar for: as `parseDue` reads it, or a month ("2026-03").
Instant parseDay(Session& session, const std::string& typed);

}  // namespace tesserine::cli
