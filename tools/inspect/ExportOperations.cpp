#include "core/export/ICSExporter.h"
#include "core/tasks/TaskSnapshot.h"
#include "tools/inspect/DateInputs.h"

#include <boost/json/array.hpp>

#include <algorithm>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

const object& objectOf(const value& element, std::string_view key) {
    if (element.is_object()) return element.get_object();
    throw InputError("“" + std::string(key) + "” is not an object");
}

/// A rule whose weekdays may be numbers that are none.
RecurrenceRule ruleOf(object rule) {
    const value weekdays = rule["weekdays"];
    rule["weekdays"] = nullptr;
    RecurrenceRule read = recurrenceRule(rule);
    if (weekdays.is_null()) return read;
    if (!weekdays.is_array()) throw InputError("“weekdays” is no list");
    for (const value& number : weekdays.get_array()) {
        if (!number.is_int64()) throw InputError("“weekdays” holds something that is no number");
        read.weekdays.insert(static_cast<int>(std::clamp<std::int64_t>(number.get_int64(), 0, 8)));
    }
    return read;
}

ICSTask taskOf(const object& given) {
    const auto id = Uuid::parse(text(given, "id"));
    if (!id) throw InputError("“id” is no UUID");
    const value* const rule = given.if_contains("rule");
    const value* const hasTime = given.if_contains("dueHasTime");
    ICSTask task{
        .id = *id,
        .title = optionalText(given, "title").value_or(""),
        .details = optionalText(given, "details").value_or(""),
        .dueDate = optionalInstant(given, "dueDate"),
        .dueHasTime = hasTime != nullptr && hasTime->is_bool() && hasTime->get_bool(),
        .priority = taskPriority(integer(given, "priority", 4))};
    if (rule != nullptr && !rule->is_null()) task.rule = ruleOf(objectOf(*rule, "rule"));
    task.createdAt = optionalInstant(given, "createdAt");
    task.updatedAt = optionalInstant(given, "updatedAt");
    task.completedAt = optionalInstant(given, "completedAt");
    return task;
}

ICSExporter exporterOf(const object& input) {
    return {instant(input, "exportedAt"), calendarOf(input)};
}

/// `ics.escape`: a text as the value of a property.
value escapedText(const object& input) {
    return boost::json::string(ICSExporter::escaped(text(input, "text")));
}

/// `ics.rrule`: a rule as the value of RRULE.
value ruleText(const object& input) {
    const RecurrenceRule rule = ruleOf(objectOf(member(input, "rule"), "rule"));
    return boost::json::string(ICSExporter::ruleText(rule));
}

/// `ics.todo`: the lines of one task.
value componentLines(const object& input) {
    boost::json::array lines;
    for (const auto& line :
         exporterOf(input).component(taskOf(objectOf(member(input, "task"), "task")))) {
        lines.push_back(boost::json::string(line));
    }
    return lines;
}

/// `ics.document`: a whole document, split where its lines end.
value document(const object& input) {
    std::vector<ICSTask> tasks;
    for (const value& task : elements(input, "tasks")) {
        tasks.push_back(taskOf(objectOf(task, "tasks")));
    }
    const value* const completed = input.if_contains("includeCompleted");
    const bool includesCompleted =
        completed != nullptr && completed->is_bool() && completed->get_bool();
    const std::string text =
        exporterOf(input).document(std::move(tasks), {.includeCompleted = includesCompleted});

    constexpr std::string_view separator = "\r\n";
    boost::json::array lines;
    std::string_view rest = text;
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = rest.find(separator);
        lines.push_back(boost::json::string(rest.substr(0, end)));
        if (end != std::string_view::npos) rest.remove_prefix(end + separator.size());
    }
    return object{{"lines", lines}, {"separator", separator}};
}

}  // namespace

void addExportOperations(Operations& operations) {
    operations.add("ics.escape", escapedText);
    operations.add("ics.rrule", ruleText);
    operations.add("ics.todo", componentLines);
    operations.add("ics.document", document);
}

}  // namespace tesserine::inspect
