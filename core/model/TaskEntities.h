#pragma once

#include "core/model/NoteEntities.h"

namespace tesserine {

class CDProject;
template <>
inline constexpr EntityKind entityKindOf<CDProject> = EntityKind::project;

/// How urgent a task is; `p1` most.
enum class TaskPriority : std::int16_t { p1 = 1, p2 = 2, p3 = 3, p4 = 4 };

/// A thing to do; tasks form a tree of subtasks.
class CDTask final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::task;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> title{*this, "title"};
    Attribute<std::string> details{*this, "details"};
    Attribute<Instant> dueDate{*this, "dueDate", {.isIndexed = true}};
    Attribute<bool> dueHasTime{*this, "dueHasTime", {.defaultValue = false}};
    Attribute<Instant> reminderAt{*this, "reminderAt"};
    Attribute<std::int16_t> priority{*this, "priority", {.defaultValue = 4}};
    Attribute<Instant> completedAt{*this, "completedAt"};
    Attribute<std::string> recurrenceRule{*this, "recurrenceRule"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<Instant> updatedAt{*this, "updatedAt"};
    Attribute<std::int64_t> sortIndex{*this, "sortIndex", {.defaultValue = 0}};

    ToOne<CDNote> linkedNote{*this, "linkedNote", "tasks"};
    ToMany<CDTask> subtasks{*this, "subtasks", "parent", {.deleteRule = DeleteRule::cascade}};
    ToOne<CDTask> parent{*this, "parent", "subtasks"};
    ToOne<CDProject> project{*this, "project", "tasks"};
    ToMany<CDTag> labels{*this, "labels", "tasks", {.ownsLinks = true}};
};

/// A list of tasks.
class CDProject final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::project;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> name{*this, "name"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<std::int64_t> sortIndex{*this, "sortIndex", {.defaultValue = 0}};
    Attribute<bool> isInbox{*this, "isInbox", {.defaultValue = false}};
    Attribute<Instant> updatedAt{*this, "updatedAt"};

    ToMany<CDTask> tasks{*this, "tasks", "project"};
};

/// A task to be made again and again.
class CDTaskTemplate final : public StoreObject {
public:
    static constexpr EntityKind kind = EntityKind::taskTemplate;
    using StoreObject::StoreObject;

    Attribute<Uuid> id{*this, "id"};
    Attribute<std::string> name{*this, "name"};
    Attribute<std::string> title{*this, "title"};
    Attribute<std::string> details{*this, "details"};
    Attribute<std::int16_t> priority{*this, "priority", {.defaultValue = 4}};
    /// A JSON array of label names.
    Attribute<std::string> labelsJSON{*this, "labelsJSON"};
    Attribute<bool> hasDueOffset{*this, "hasDueOffset", {.defaultValue = false}};
    Attribute<std::int64_t> dueOffsetDays{*this, "dueOffsetDays", {.defaultValue = 0}};
    Attribute<std::string> dueTime{*this, "dueTime"};
    Attribute<std::string> recurrenceRule{*this, "recurrenceRule"};
    Attribute<Uuid> projectID{*this, "projectID"};
    /// A JSON array.
    Attribute<std::string> subtasksJSON{*this, "subtasksJSON"};
    Attribute<Instant> createdAt{*this, "createdAt"};
    Attribute<Instant> updatedAt{*this, "updatedAt"};
};

}  // namespace tesserine
