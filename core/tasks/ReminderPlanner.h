#pragma once

#include "base/Calendar.h"
#include "base/Uuid.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tesserine {

class CDNote;
class CDTask;

/// A notification that the system is to show.
struct ReminderPlan {
    enum class Kind { task, note };

    Kind kind = Kind::task;
    Instant fireAt{};
    std::string title{};
    std::string body{};
    Uuid ownerID{};  ///< the task or the note

    /// Names the notification to the system, and through it its owner: the UUID of a task,
    /// "note-" and the UUID of a note.
    std::string identifier() const;
};

/// Who may have a reminder.
struct ReminderOwners {
    std::vector<CDTask*> tasks{};
    std::vector<CDNote*> notes{};
};

/// Turns the library's reminders into notifications. Holds no state and changes nothing; reads the
/// text of a note only when its reminder is among those planned. Call it on the thread of the
/// owners' context.
class ReminderPlanner {
public:
    /// As many as a program asks for, tasks and notes together.
    static constexpr int usualLimit = 60;

    /// The earliest `limit` reminders later than `now`, in the order of their times; at one time
    /// tasks stand before notes. Completed tasks, notes in the trash and templates have none. A
    /// negative limit is 0.
    static std::vector<ReminderPlan> plans(const ReminderOwners& owners, Instant now, int limit);
};

/// Shows a notification in a certain minute of the wall clock.
struct CalendarTrigger {
    LocalTime minute{};  ///< without seconds
    std::string zone{};  ///< IANA name
};
/// Shows a notification some time from now.
struct IntervalTrigger {
    double seconds = 1;  ///< at least 1
};
using ReminderTrigger = std::variant<CalendarTrigger, IntervalTrigger>;

/// The trigger for a reminder at `fireAt`: its minute, or when that minute has begun, the seconds
/// that are left.
ReminderTrigger reminderTrigger(Instant fireAt, Instant now, const Calendar& calendar);

/// A notification that the system shows or is about to show.
struct DeliveredReminder {
    std::string identifier{};
    std::optional<Uuid> taskID{};
    std::optional<Uuid> noteID{};
    std::optional<Instant> fireAt{};  ///< none: the system does not tell

    /// Whether its owner, whose reminder is now at `reminderAt`, wants it withdrawn: the reminder
    /// was removed, or moved by more than a minute. One of unknown time stays.
    bool isOutdated(std::optional<Instant> reminderAt) const;
};

}  // namespace tesserine
