#include "core/export/ICSExporter.h"

#include "base/Files.h"
#include "base/Product.h"
#include "base/Text.h"
#include "core/export/ExportError.h"
#include "core/store/StoreContext.h"
#include "core/tasks/TaskSnapshot.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace tesserine {
namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::array<std::string_view, 7> weekdayCodes{"SU", "MO", "TU", "WE", "TH", "FR", "SA"};

/// "2026-03-14T09:15:00" as "20260314T091500".
std::string compact(std::string iso) {
    std::erase_if(iso, [](char c) { return c == '-' || c == ':'; });
    return iso;
}

/// The second that `instant` lies in, in UTC.
std::string timeStamp(Instant instant) {
    constexpr std::size_t upToSeconds = 19;
    return compact(instant.floorToMillisecond().iso().substr(0, upToSeconds)) + "Z";
}

std::string dayStamp(Instant instant, const Calendar& calendar) {
    constexpr std::size_t upToDay = 10;
    return compact(calendar.local(instant).iso().substr(0, upToDay));
}

std::string_view frequency(RecurrenceRule::Unit unit) {
    switch (unit) {
    case RecurrenceRule::Unit::day: return "DAILY";
    case RecurrenceRule::Unit::week: return "WEEKLY";
    case RecurrenceRule::Unit::month: return "MONTHLY";
    case RecurrenceRule::Unit::year: return "YEARLY";
    }
    return {};
}

/// The codes of weekdays, Sunday = 1; other numbers are none.
std::string weekdayList(const std::set<int>& weekdays) {
    std::string list;
    for (const int weekday : weekdays) {
        if (weekday < 1 || weekday > 7) continue;
        if (!list.empty()) list += ",";
        list += weekdayCodes.at(static_cast<std::size_t>(weekday - 1));
    }
    return list;
}

/// RFC 5545 counts from 1, the most urgent, to 9; 0 is no priority.
int calendarPriority(TaskPriority priority) {
    switch (priority) {
    case TaskPriority::p1: return 1;
    case TaskPriority::p2: return 3;
    case TaskPriority::p3: return 5;
    case TaskPriority::p4: return 0;
    }
    return 0;
}

}  // namespace

ICSTask ICSTask::of(const CDTask& task) {
    // What another program wrote into the library need not be clean text; a file has to be.
    return {
        .id = task.id.valueOr(Uuid()),
        .title = text::sanitized(task.title.valueOr("")),
        .details = text::sanitized(task.details.valueOr("")),
        .dueDate = task.dueDate,
        .dueHasTime = task.dueHasTime.valueOr(false),
        .rule = RecurrenceRule::fromStorageString(task.recurrenceRule.valueOr("")),
        .priority = taskPriority(task.priority.valueOr(4)),
        .createdAt = task.createdAt,
        .updatedAt = task.updatedAt,
        .completedAt = task.completedAt};
}

std::string ICSExporter::document(
    std::vector<ICSTask> tasks, const ICSExportOptions& options) const {
    std::erase_if(tasks, [&options](const ICSTask& task) {
        return !task.dueDate || (task.completedAt && !options.includeCompleted);
    });
    std::ranges::sort(tasks, {}, [this](const ICSTask& task) {
        return std::tuple(task.dueDate, task.createdAt.value_or(exportedAt_), task.id);
    });

    std::string text;
    const auto add = [&text](std::string_view line) { text.append(line).append(lineEnd); };
    for (const std::string_view line :
         {"BEGIN:VCALENDAR",
          "VERSION:2.0",
          "PRODID:-//Tesserine//Tesserine Tasks//EN",
          "CALSCALE:GREGORIAN",
          "METHOD:PUBLISH"}) {
        add(line);
    }
    for (const ICSTask& task : tasks) {
        std::ranges::for_each(component(task), add);
    }
    return text.append("END:VCALENDAR");
}

std::vector<std::string> ICSExporter::component(const ICSTask& task) const {
    const Instant due = task.dueDate.value_or(exportedAt_);
    const std::string dueText =
        task.dueHasTime ? ":" + timeStamp(due) : ";VALUE=DATE:" + dayStamp(due, calendar_);
    std::vector<std::string> lines{
        "BEGIN:VTODO",
        "UID:" + task.id.text() + "@" + std::string(product::domain),
        "DTSTAMP:" + timeStamp(exportedAt_),
        "CREATED:" + timeStamp(task.createdAt.value_or(exportedAt_)),
        "LAST-MODIFIED:" + timeStamp(task.updatedAt.value_or(exportedAt_)),
        "SUMMARY:" + escaped(task.title)};
    if (!task.details.empty()) lines.push_back("DESCRIPTION:" + escaped(task.details));
    lines.push_back("DTSTART" + dueText);
    lines.push_back("DUE" + dueText);
    if (task.rule) lines.push_back("RRULE:" + ruleText(*task.rule));
    if (task.completedAt) lines.push_back("COMPLETED:" + timeStamp(*task.completedAt));
    lines.push_back("PRIORITY:" + std::to_string(calendarPriority(task.priority)));
    lines.emplace_back("END:VTODO");
    return lines;
}

std::string ICSExporter::ruleText(const RecurrenceRule& rule) {
    std::string text = "FREQ=" + std::string(frequency(rule.unit));
    text += ";INTERVAL=" + std::to_string(std::max(rule.interval, 1));
    const std::string weekdays = weekdayList(rule.weekdays);
    if (!weekdays.empty()) text += ";BYDAY=" + weekdays;
    if (rule.dayOfMonth) text += ";BYMONTHDAY=" + std::to_string(*rule.dayOfMonth);
    if (rule.monthOfYear) text += ";BYMONTH=" + std::to_string(*rule.monthOfYear);
    return text;
}

std::string ICSExporter::escaped(std::string_view text) {
    std::string value;
    value.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = text.substr(i, 2) == lineEnd;
        if (isPair) continue;  // its LF is the line break
        switch (text[i]) {
        case '\\':
        case ';':
        case ',': value.append(1, '\\').append(1, text[i]); break;
        case '\r':
        case '\n': value += "\\n"; break;
        default: value += text[i];
        }
    }
    return value;
}

std::size_t exportCalendar(
    StoreContext& context,
    const std::filesystem::path& file,
    const ICSExportOptions& options,
    const Calendar& calendar) {
    const Predicate dated = options.includeCompleted
                                ? Predicate("dueDate != nil")
                                : Predicate("dueDate != nil AND completedAt == nil");
    std::vector<ICSTask> tasks;
    for (const CDTask* const task : context.fetch<CDTask>({.predicate = dated})) {
        tasks.push_back(ICSTask::of(*task));
    }
    const std::size_t count = tasks.size();
    const ICSExporter exporter(context.now(), calendar);
    const std::string text = exporter.document(std::move(tasks), options).append(lineEnd);
    try {
        files::writeNew(file, bytesOf(text));
    } catch (const FileError& error) {
        throw ExportError::writeFailed(error.what());
    }
    return count;
}

}  // namespace tesserine
