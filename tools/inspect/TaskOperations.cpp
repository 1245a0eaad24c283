#include "base/Clock.h"
#include "base/Random.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "core/tasks/ReminderPlanner.h"
#include "core/tasks/TaskCalendarLayout.h"
#include "tools/inspect/DateInputs.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <climits>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

// Recurrence

RecurrenceRule ruleOf(const object& input) {
    const value& rule = member(input, "rule");
    if (!rule.is_object()) throw InputError("“rule” is not an object");
    return recurrenceRule(rule.get_object());
}

value timeOrNull(std::optional<Instant> time, const Calendar& calendar) {
    if (!time) return nullptr;
    return object{{"local", calendar.local(*time).iso()}, {"utc", shortISO(*time)}};
}

/// `recurrence.next`: the next occurrence.
value nextOccurrence(const object& input) {
    const Calendar calendar = calendarOf(input);
    return timeOrNull(ruleOf(input).nextOccurrence(instant(input, "utc"), calendar), calendar);
}

/// `recurrence.catchUp`: the due date after a recurring task was completed.
value caughtUp(const object& input) {
    const Calendar calendar = calendarOf(input);
    const auto next = ruleOf(input).catchUp(instant(input, "utc"), instant(input, "now"), calendar);
    return timeOrNull(next, calendar);
}

/// `recurrence.fromEditor`: the rule of an editor's state.
value ruleFromEditor(const object& input) {
    const RecurrenceRule chosen = recurrenceRule(input);
    return RecurrenceRule::fromEditor(
               {.unit = chosen.unit,
                .interval = chosen.interval,
                .weekdays = chosen.weekdays,
                .due = optionalInstant(input, "due")},
               calendarOf(input))
        .json();
}

/// `recurrence.describe`: a rule in English.
value description(const object& input) { return boost::json::string(ruleOf(input).description()); }

/// `recurrence.storage`: a rule as it is stored.
value storageText(const object& input) {
    return boost::json::string(ruleOf(input).storageString());
}

/// `recurrence.parseStorage`: the rule that is stored in a text, null for none.
value storedRule(const object& input) {
    const auto rule = RecurrenceRule::fromStorageString(text(input, "text"));
    return rule ? value(rule->json()) : value(nullptr);
}

/// `ordinal`: a number as an English ordinal.
value ordinalText(const object& input) {
    const std::int64_t number = integer(input, "n");
    if (number < INT_MIN || number > INT_MAX) throw InputError("“n” is too far from zero");
    return boost::json::string(ordinal(static_cast<int>(number)));
}

// Reminders

const object& elementOf(const value& element, std::string_view key) {
    if (element.is_object()) return element.get_object();
    throw InputError("“" + std::string(key) + "” holds something that is no object");
}

/// A task or note of the input.
template <class Entity>
Entity& insertOwner(StoreContext& context, const object& given) {
    Entity& owner = context.insert<Entity>();
    const auto id = Uuid::parse(text(given, "id"));
    if (!id) throw InputError("“id” is no UUID");
    owner.id = *id;
    owner.title = optionalText(given, "title");
    owner.reminderAt = optionalInstant(given, "reminderAt");
    return owner;
}

CDTask& insertTask(StoreContext& context, const object& given) {
    CDTask& task = insertOwner<CDTask>(context, given);
    task.details = optionalText(given, "details");
    task.completedAt = optionalInstant(given, "completedAt");
    const bool isNamed = optionalText(given, "projectName").has_value();
    if (const auto name = optionalText(given, isNamed ? "projectName" : "project")) {
        CDProject& project = context.insert<CDProject>();
        project.name = *name;
        task.project = &project;
    }
    return task;
}

CDNote& insertNote(StoreContext& context, const object& given) {
    CDNote& note = insertOwner<CDNote>(context, given);
    note.plainText = optionalText(given, "plainText");
    note.trashedAt = optionalInstant(given, "trashedAt");
    return note;
}

/// `reminder.plans`: the notifications for tasks and notes.
value plannedReminders(const object& input) {
    const Instant now = instant(input, "now");
    const std::int64_t limit = std::clamp<std::int64_t>(integer(input, "limit"), INT_MIN, INT_MAX);
    const FixedClock clock(now);
    SecureRandom random;
    TesserineStore store({.inMemory = true}, {.clock = clock, .random = random});
    ReminderOwners owners;
    for (const value& task : elements(input, "tasks")) {
        owners.tasks.push_back(&insertTask(store.viewContext(), elementOf(task, "tasks")));
    }
    for (const value& note : elements(input, "notes")) {
        owners.notes.push_back(&insertNote(store.viewContext(), elementOf(note, "notes")));
    }

    boost::json::array plans;
    for (const auto& plan : ReminderPlanner::plans(owners, now, static_cast<int>(limit))) {
        plans.push_back(object{
            {"kind", plan.kind == ReminderPlan::Kind::task ? "task" : "note"},
            {"identifier", plan.identifier()},
            {"fireAt", shortISO(plan.fireAt)},
            {"title", plan.title},
            {"body", plan.body},
        });
    }
    return plans;
}

/// `reminder.trigger`: what makes a reminder go off.
value triggerOf(const object& input) {
    const ReminderTrigger trigger =
        reminderTrigger(instant(input, "fireAt"), instant(input, "now"), calendarOf(input));
    if (const auto* const interval = std::get_if<IntervalTrigger>(&trigger)) {
        return object{{"kind", "interval"}, {"seconds", interval->seconds}};
    }
    const LocalTime& minute = std::get<CalendarTrigger>(trigger).minute;
    return object{
        {"kind", "calendar"},
        {"year", minute.year},
        {"month", minute.month},
        {"day", minute.day},
        {"hour", minute.hour},
        {"minute", minute.minute},
    };
}

/// `reminder.changed`: whether a notification shown for `a` is outdated by a reminder at `b`.
value isReminderChanged(const object& input) {
    const DeliveredReminder shown{.fireAt = optionalInstant(input, "a")};
    return shown.isOutdated(optionalInstant(input, "b"));
}

// Calendar

boost::json::array startsOf(const std::vector<CalendarDayCell>& cells) {
    boost::json::array starts;
    for (const CalendarDayCell& cell : cells) {
        starts.emplace_back(shortISO(cell.date));
    }
    return starts;
}

/// The place of the first cell that is `wanted`, -1 for none.
std::int64_t placeOf(const std::vector<CalendarDayCell>& cells, bool CalendarDayCell::*wanted) {
    const auto found = std::ranges::find(cells, true, wanted);
    return found == cells.end() ? -1 : found - cells.begin();
}

/// `calendar.month`: the grid of a month.
value monthGrid(const object& input) {
    const auto cells = TaskCalendarLayout::monthCells(
        instant(input, "date"), calendarOf(input), instant(input, "today"));
    return object{
        {"count", cells.size()},
        {"first", shortISO(cells.front().date)},
        {"last", shortISO(cells.back().date)},
        {"leading", placeOf(cells, &CalendarDayCell::isInDisplayedMonth)},
        {"displayed", std::ranges::count(cells, true, &CalendarDayCell::isInDisplayedMonth)},
        {"todayIndex", placeOf(cells, &CalendarDayCell::isToday)},
        {"starts", startsOf(cells)},
    };
}

/// `calendar.week`: the row of a week.
value weekRow(const object& input) {
    const auto cells = TaskCalendarLayout::weekCells(
        instant(input, "date"), calendarOf(input), instant(input, "today"));
    return object{
        {"count", cells.size()},
        {"starts", startsOf(cells)},
        {"todayIndex", placeOf(cells, &CalendarDayCell::isToday)},
    };
}

}  // namespace

void addTaskOperations(Operations& operations) {
    operations.add("recurrence.next", nextOccurrence);
    operations.add("recurrence.catchUp", caughtUp);
    operations.add("recurrence.fromEditor", ruleFromEditor);
    operations.add("recurrence.describe", description);
    operations.add("recurrence.storage", storageText);
    operations.add("recurrence.parseStorage", storedRule);
    operations.add("ordinal", ordinalText);
    operations.add("reminder.plans", plannedReminders);
    operations.add("reminder.trigger", triggerOf);
    operations.add("reminder.changed", isReminderChanged);
    operations.add("calendar.month", monthGrid);
    operations.add("calendar.week", weekRow);
}

}  // namespace tesserine::inspect
