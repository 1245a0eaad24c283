#include "core/tasks/TaskTemplateContent.h"

#include "base/JSON.h"
#include "base/Text.h"
#include "core/tasks/TaskSnapshot.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace tesserine {
namespace {

std::string asJSONArray(const std::vector<std::string>& texts) {
    boost::json::array array;
    for (const std::string& text : texts) {
        array.emplace_back(text);
    }
    return json::write(array);
}

/// The texts of a JSON array; what is none is skipped.
std::vector<std::string> textsOf(const std::string& stored) {
    std::vector<std::string> texts;
    try {
        const boost::json::value value = json::parse(stored);
        if (!value.is_array()) return texts;
        for (const boost::json::value& element : value.as_array()) {
            if (element.is_string()) texts.emplace_back(element.as_string());
        }
    } catch (const json::JSONError&) {
        // Another program wrote it; the rest of the template is still good.
    }
    return texts;
}

std::string dueText(const TaskTemplateContent& content) {
    if (!content.dueOffsetDays) return "No due date";
    std::string text = "Due ";
    switch (*content.dueOffsetDays) {
    case 0: text += "the day it is created"; break;
    case 1: text += "the day after it is created"; break;
    default: text += std::to_string(*content.dueOffsetDays) + " days after it is created";
    }
    if (content.dueTime) text += " at " + timeText(*content.dueTime);
    return text;
}

/// The number that `text` is, if it has one or two digits and nothing else.
std::optional<int> twoDigits(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc{} && end == text.data() + text.size();
    return isWhole && number >= 0 && text.size() <= 2 ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string timeText(TimeOfDay time) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d", time.hour, time.minute);
    return text.data();
}

std::optional<TimeOfDay> timeOfDay(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || text.size() - colon != 3) return std::nullopt;
    const auto hour = twoDigits(text.substr(0, colon));
    const auto minute = twoDigits(text.substr(colon + 1));
    if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
    return TimeOfDay{.hour = *hour, .minute = *minute};
}

TaskTemplateContent TaskTemplateContent::of(const CDTaskTemplate& stored) {
    TaskTemplateContent content{
        .name = stored.name.valueOr(""),
        .title = stored.title.valueOr(""),
        .notes = stored.details.valueOr(""),
        .priority = taskPriority(stored.priority.valueOr(4)),
        .labels = textsOf(stored.labelsJSON.valueOr("[]")),
        .dueTime = timeOfDay(stored.dueTime.valueOr("")),
        .recurrence = RecurrenceRule::fromStorageString(stored.recurrenceRule.valueOr("")),
        .projectID = stored.projectID,
        .subtasks = textsOf(stored.subtasksJSON.valueOr("[]"))};
    if (stored.hasDueOffset) {
        content.dueOffsetDays = std::max<std::int64_t>(stored.dueOffsetDays.valueOr(0), 0);
    }
    return content;
}

void TaskTemplateContent::store(CDTaskTemplate& stored) const {
    stored.name = name;
    stored.title = title;
    stored.details = notes;
    stored.priority = static_cast<std::int16_t>(priority);
    stored.labelsJSON = asJSONArray(labels);
    stored.hasDueOffset = dueOffsetDays.has_value();
    stored.dueOffsetDays = std::max<std::int64_t>(dueOffsetDays.value_or(0), 0);
    stored.dueTime = dueTime ? std::optional(timeText(*dueTime)) : std::nullopt;
    stored.recurrenceRule = recurrence ? std::optional(recurrence->storageString()) : std::nullopt;
    stored.projectID = projectID;
    stored.subtasksJSON = asJSONArray(subtasks);
}

TaskTemplateSnapshot TaskTemplateSnapshot::of(const CDTaskTemplate& stored) {
    return {
        .id = stored.id.valueOr({}),
        .content = TaskTemplateContent::of(stored),
        .createdAt = stored.createdAt.valueOr({})};
}

std::string TaskTemplateContent::summary() const {
    std::vector<std::string> parts;
    if (priority != TaskPriority::p4) parts.push_back(shortLabel(priority));
    parts.push_back(dueText(*this));
    if (recurrence) parts.emplace_back("Repeats");
    if (!labels.empty()) parts.push_back(text::joined(labels, " "));
    if (!subtasks.empty()) {
        const char* noun = subtasks.size() == 1 ? " subtask" : " subtasks";
        parts.push_back(std::to_string(subtasks.size()) + noun);
    }
    return text::joined(parts, " · ");
}

}  // namespace tesserine
