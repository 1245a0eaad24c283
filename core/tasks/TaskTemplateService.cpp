#include "core/tasks/TaskTemplateService.h"

#include "base/Calendar.h"
#include "core/store/StoreContext.h"

#include <algorithm>

namespace tesserine {
namespace {

void trim(std::string& text) { text = std::string(text::trimmed(text)); }

void tidy(std::vector<std::string>& texts) {
    std::ranges::for_each(texts, trim);
    std::erase(texts, "");
}

/// The content as it is stored. Throws for a blank name or a title that is too long.
TaskTemplateContent storable(TaskTemplateContent content) {
    content.name =
        text::prefix(text::trimmed(content.name), TaskTemplateService::maximumNameCharacters);
    trim(content.name);
    if (content.name.empty()) throw TaskTemplateError::needsName();
    trim(content.title);
    tidy(content.labels);
    tidy(content.subtasks);
    TaskService::checkTitle(content.title);
    std::ranges::for_each(content.subtasks, TaskService::checkTitle);
    if (content.dueOffsetDays) {
        content.dueOffsetDays = std::clamp<std::int64_t>(
            *content.dueOffsetDays, 0, TaskTemplateService::mostDueOffsetDays);
    }
    return content;
}

}  // namespace

std::vector<CDTaskTemplate*> TaskTemplateService::all(
    StoreContext& context, const text::Collator& collator) const {
    auto templates = context.fetch<CDTaskTemplate>({.sort = {{"createdAt"}}});
    std::ranges::stable_sort(templates, [&](const CDTaskTemplate* a, const CDTaskTemplate* b) {
        return collator.compare(a->name.valueOr(""), b->name.valueOr("")) < 0;
    });
    return templates;
}

CDTaskTemplate& TaskTemplateService::createUntitled(StoreContext& context) const {
    return create(context, {.name = untitledName});
}

CDTaskTemplate& TaskTemplateService::create(
    StoreContext& context, TaskTemplateContent content) const {
    content = storable(std::move(content));
    auto& made = context.insert<CDTaskTemplate>();
    content.store(made);
    made.createdAt = clock_.now();
    made.updatedAt = clock_.now();
    return made;
}

TaskTemplateContent TaskTemplateService::contentOf(
    const CDTask& task, const text::Collator& collator) const {
    const TaskSnapshot snapshot = TaskSnapshot::of(task, collator);
    TaskTemplateContent content{
        .name = untitledName,
        .title = snapshot.title,
        .notes = snapshot.details,
        .priority = snapshot.priority,
        .labels = snapshot.labels,
        .recurrence = snapshot.recurrenceRule,
        .projectID = snapshot.projectID};
    for (const TaskSnapshot& subtask : snapshot.subtasks) {
        content.subtasks.push_back(subtask.title);
    }
    return content;
}

void TaskTemplateService::update(
    StoreContext& context, const Uuid& id, TaskTemplateContent content) const {
    CDTaskTemplate& stored = find(context, id);
    storable(std::move(content)).store(stored);
    stored.updatedAt = clock_.now();
}

void TaskTemplateService::remove(StoreContext& context, const Uuid& id) const {
    context.remove(find(context, id));
}

CDTask& TaskTemplateService::use(
    StoreContext& context, const Uuid& id, const Calendar& calendar) const {
    const TaskTemplateContent content = TaskTemplateContent::of(find(context, id));
    CDTask& task = tasks_.create(
        context,
        {.title = content.title,
         .details = content.notes,
         .due = dueToday(content, calendar),
         .priority = content.priority,
         .recurrence = content.recurrence,
         .labels = content.labels,
         .project = content.projectID ? context.find<CDProject>(*content.projectID) : nullptr});
    for (const std::string& title : content.subtasks) {
        tasks_.create(context, {.title = title, .parent = &task});
    }
    return task;
}

CDTaskTemplate& TaskTemplateService::find(StoreContext& context, const Uuid& id) {
    if (auto* found = context.find<CDTaskTemplate>(id)) return *found;
    throw TaskTemplateError::notFound();
}

std::optional<TaskDue> TaskTemplateService::dueToday(
    const TaskTemplateContent& content, const Calendar& calendar) const {
    if (!content.dueOffsetDays) return std::nullopt;
    const auto offset = static_cast<int>(std::min(*content.dueOffsetDays, mostDueOffsetDays));
    const Instant day =
        calendar.startOfDay(calendar.addDays(calendar.startOfDay(clock_.now()), offset));
    if (!content.dueTime) return TaskDue{.date = day};
    LocalTime at = calendar.local(day);
    at.hour = content.dueTime->hour;
    at.minute = content.dueTime->minute;
    return TaskDue{.date = calendar.instant(at), .hasTime = true};
}

}  // namespace tesserine
