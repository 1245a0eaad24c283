#include "core/tasks/TaskService.h"
#include "core/tasks/TaskTemplateContent.h"
#include "tools/inspect/DateInputs.h"

#include <boost/json/array.hpp>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

const object* optionalObject(const object& input, std::string_view key) {
    const value* found = input.if_contains(key);
    if (found == nullptr || found->is_null()) return nullptr;
    if (!found->is_object()) throw InputError("“" + std::string(key) + "” is not an object");
    return &found->as_object();
}

/// A time of day as "09:05" or {hour, minute}.
std::optional<TimeOfDay> dueTime(const object& content) {
    const value* found = content.if_contains("dueTime");
    if (found == nullptr || found->is_null()) return std::nullopt;
    if (found->is_object()) {
        const object& time = found->as_object();
        return TimeOfDay{
            .hour = static_cast<int>(integer(time, "hour")),
            .minute = static_cast<int>(integer(time, "minute"))};
    }
    const auto time = timeOfDay(text(content, "dueTime"));
    if (!time) throw InputError("“dueTime” is not a time of day");
    return time;
}

/// `template.summary`: the line that tells what a task template makes.
value summaryOfTemplate(const object& input) {
    const object* given = optionalObject(input, "content");
    if (given == nullptr) throw InputError("the input needs “content”");
    TaskTemplateContent content{
        .priority = taskPriority(integer(*given, "priority", 4)),
        .labels = texts(*given, "labels"),
        .dueTime = dueTime(*given),
        .subtasks = texts(*given, "subtasks")};
    content.dueOffsetDays = optionalInteger(*given, "dueOffsetDays");
    if (const object* rule = optionalObject(*given, "recurrence")) {
        content.recurrence = recurrenceRule(*rule);
    }
    return boost::json::string(content.summary());
}

/// `task.duplicateTitle`: the title of a task's duplicate.
value titleOfTaskDuplicate(const object& input) {
    return boost::json::string(
        TaskService::duplicateTitle(optionalText(input, "title").value_or("")));
}

}  // namespace

void addTaskServiceOperations(Operations& operations) {
    operations.add("task.duplicateTitle", titleOfTaskDuplicate);
    operations.add("template.summary", summaryOfTemplate);
}

}  // namespace tesserine::inspect
