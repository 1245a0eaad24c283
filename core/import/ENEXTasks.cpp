#include "core/import/ENEXTasks.h"

#include "base/Text.h"
#include "core/body/HTMLSerializer.h"
#include "core/import/SourceDate.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace tesserine {
namespace {

bool isCompleted(const ENEXFields& task) { return task.text("taskStatus") == "completed"; }

std::string titleOf(const ENEXFields& task) {
    const std::string title = text::collapsed(text::sanitized(std::string(task.text("title"))));
    return std::string(text::prefix(title, TaskService::maximumTitleCharacters));
}

/// By group, and in it by weight, which are texts made to sort as bytes.
std::vector<const ENEXFields*> inOrder(const ENEXNote& note) {
    std::vector<const ENEXFields*> tasks;
    for (const ENEXFields& task : note.tasks) {
        if (!titleOf(task).empty()) tasks.push_back(&task);
    }
    const auto place = [](const ENEXFields* task) {
        return std::tuple(task->text("taskGroupNoteLevelID"), task->text("sortWeight"));
    };
    std::ranges::stable_sort(tasks, {}, place);
    return tasks;
}

/// The day on which a task is due begins at another instant in each zone: what counts is the day in
/// the zone where the date was chosen.
std::optional<TaskDue> dueOf(const ENEXFields& task, const Calendar& calendar) {
    const auto date = compactDate(task.text("dueDate"));
    if (!date) return std::nullopt;
    if (task.text("dueDateUIOption") != "date_only") return TaskDue{*date, true};
    const std::string zone(task.text("timeZone"));
    const Calendar chosenIn = Calendar::isZone(zone) ? Calendar(zone) : calendar;
    const LocalTime day = chosenIn.local(*date);
    return TaskDue{calendar.instant({.year = day.year, .month = day.month, .day = day.day}), false};
}

std::optional<Instant> reminderOfTask(const ENEXFields& task) {
    const std::string_view status = task.text("reminder.reminderStatus");
    if (status != "active" && !status.empty()) return std::nullopt;
    return compactDate(task.text("reminder.reminderDate"));
}

}  // namespace

std::vector<ImportedTask> enexTasks(const ENEXNote& note, const Calendar& calendar) {
    std::vector<ImportedTask> result;
    for (const ENEXFields* task : inOrder(note)) {
        ImportedTask made{
            .draft = {.title = titleOf(*task), .due = dueOf(*task, calendar)},
            .createdAt = compactDate(task->text("created")),
            .updatedAt = compactDate(task->text("updated"))};
        if (task->text("taskFlag") == "true") made.draft.priority = TaskPriority::p2;
        if (isCompleted(*task)) {
            made.completedAt = compactDate(task->text("statusUpdated"));
            if (!made.completedAt) made.completedAt = made.updatedAt.value_or(Instant{});
        } else {
            made.draft.reminderAt = reminderOfTask(*task);
        }
        result.push_back(std::move(made));
    }
    return result;
}

std::string taskChecklist(const ENEXNote& note, std::string_view group) {
    HTMLSerializer html;
    bool isOpen = false;
    for (const ENEXFields* task : inOrder(note)) {
        if (text::asciiLowercased(task->text("taskGroupNoteLevelID")) != group) continue;
        constexpr std::array<HTMLAttribute, 1> checklist{{{"class", "ts-checklist"}}};
        if (!isOpen) html.open(HTMLElement::ul, "ul", checklist);
        isOpen = true;
        const std::array<HTMLAttribute, 1> checked{
            {{"data-checked", isCompleted(*task) ? "true" : "false"}}};
        html.open(HTMLElement::li, "li", checked);
        html.text(titleOf(*task));
        html.close();
    }
    if (isOpen) html.close();
    return html.html();
}

}  // namespace tesserine
