#pragma once

#include "core/tasks/TaskService.h"
#include "core/tasks/TaskTemplateContent.h"

#include <vector>

namespace tesserine {

/// Keeps the task templates and makes tasks from them.
///
/// Works in the context it is handed and never saves. Content is put in order on its way in: texts
/// trimmed, empty labels and subtasks dropped, names cut at 200 characters. Not synchronised: call
/// it on the thread that owns the context.
class TaskTemplateService {
public:
    static constexpr const char* untitledName = "Untitled Template";
    static constexpr std::size_t maximumNameCharacters = 200;
    /// A hundred years: enough for anybody, and no date beyond the calendar's end.
    static constexpr std::int64_t mostDueOffsetDays = 36'500;

    explicit TaskTemplateService(const Clock& clock) : clock_(clock), tasks_(clock) {}

    /// The templates by name.
    std::vector<CDTaskTemplate*> all(StoreContext& context, const text::Collator& collator) const;

    /// A new template called "Untitled Template", otherwise empty.
    CDTaskTemplate& createUntitled(StoreContext& context) const;
    /// A new template. Throws `TaskTemplateError::needsName` and `TaskError`.
    CDTaskTemplate& create(StoreContext& context, TaskTemplateContent content) const;
    /// What a template made from the task holds, its due date left out; untitled so far.
    TaskTemplateContent contentOf(const CDTask& task, const text::Collator& collator) const;
    /// Throws `TaskTemplateError` and `TaskError`; the template is then as it was.
    void update(StoreContext& context, const Uuid& id, TaskTemplateContent content) const;
    /// Throws `TaskTemplateError::notFound`.
    void remove(StoreContext& context, const Uuid& id) const;

    /// Makes a task from the template, due counted from today; a project that is gone counts as
    /// none. Throws `TaskTemplateError::notFound`.
    CDTask& use(StoreContext& context, const Uuid& id, const Calendar& calendar) const;

private:
    static CDTaskTemplate& find(StoreContext& context, const Uuid& id);
    std::optional<TaskDue> dueToday(
        const TaskTemplateContent& content, const Calendar& calendar) const;

    const Clock& clock_;
    TaskService tasks_;
};

}  // namespace tesserine
