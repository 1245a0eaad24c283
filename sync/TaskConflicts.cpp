#include "sync/TaskConflicts.h"

#include "base/JSON.h"
#include "core/model/BookkeepingEntities.h"
#include "core/store/StoreContext.h"
#include "core/tasks/TaskService.h"
#include "sync/RecordFields.h"
#include "sync/RecordKinds.h"
#include "sync/SyncLedger.h"
#include "sync/WireCoding.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine {
namespace {

/// What a person compares; where a task stands and what labels it has is merged without asking.
constexpr std::array comparedKeys = {
    "title",
    "details",
    "due_date",
    "due_has_time",
    "reminder_at",
    "priority",
    "completed_at",
    "recurrence_rule",
};

std::vector<RecordField> comparedFields() {
    std::vector<RecordField> fields = recordFields(EntityKind::task);
    std::erase_if(fields, [](const RecordField& field) {
        return std::ranges::find(comparedKeys, field.key) == comparedKeys.end();
    });
    return fields;
}

TaskVersion versionOf(const JSONObject& payload) {
    const auto updated = payload.find("updated_at");
    const auto date =
        updated == payload.end() ? std::nullopt : valueOf(updated->second, AttributeType::date);
    const bool hasDate = date && !isNull(*date);
    return TaskVersion::from(
        {.kind = std::string(*recordKindOf(EntityKind::task)),
         .payload = payload,
         .updatedAt = hasDate ? std::get<Instant>(*date) : Instant()});
}

JSONObject payloadOf(CDTask& task) {
    JSONObject payload;
    for (const RecordField& field : recordFields(EntityKind::task)) {
        if (field.form == RecordField::Form::attribute) {
            payload[field.key] = jsonOf(task.value(field.index));
        }
    }
    return payload;
}

bool looksTheSame(const JSONObject& version, const JSONObject& present) {
    return std::ranges::all_of(comparedFields(), [&](const RecordField& field) {
        const auto member = version.find(field.key);
        return member == version.end() || member->second == present.at(field.key);
    });
}

/// The versions of an entry, oldest first.
std::vector<JSONObject> versionsIn(CDSyncMeta& entry) {
    std::vector<JSONObject> versions;
    try {
        const JSONValue stored = JSONValue::decode(entry.value.valueOr(""));
        if (stored.array() == nullptr) return versions;
        for (const JSONValue& one : *stored.array()) {
            if (one.object() != nullptr) versions.push_back(*one.object());
        }
    } catch (const WireError&) {
        versions.clear();
    }
    return versions;
}

void setVersions(CDSyncMeta& entry, const std::vector<JSONObject>& versions) {
    const JSONValue list = JSONValue::Array(versions.begin(), versions.end());
    entry.value = json::write(list.toJSON());
}

/// Gives `task` what a person compares of `version`.
void apply(const JSONObject& version, CDTask& task) {
    for (const RecordField& field : comparedFields()) {
        const auto member = version.find(field.key);
        if (member == version.end()) continue;
        if (auto value = valueOf(member->second, field.type)) {
            task.setValue(field.index, *std::move(value));
        }
    }
}

/// The task an entry is about.
std::optional<Uuid> taskOf(const std::string& name) {
    const bool isConflict = name.starts_with(SyncLedger::conflictPrefix);
    return isConflict ? Uuid::parse(name.substr(SyncLedger::conflictPrefix.size())) : std::nullopt;
}

}  // namespace

std::vector<TaskConflict> TaskConflicts::all() {
    std::vector<TaskConflict> conflicts;
    const std::string prefix(SyncLedger::conflictPrefix);
    for (CDSyncMeta* const entry :
         context_.fetch<CDSyncMeta>({.predicate = {"key > %@", prefix}})) {
        const auto task = taskOf(entry->keyName.valueOr(""));
        const auto conflict = task ? of(*task) : std::nullopt;
        if (conflict) conflicts.push_back(*conflict);
    }
    std::ranges::sort(conflicts, {}, [](const TaskConflict& one) {
        return std::pair(one.present.title, one.task);
    });
    return conflicts;
}

std::optional<TaskConflict> TaskConflicts::of(const Uuid& task) {
    auto* const stored = context_.find<CDTask>(task);
    CDSyncMeta* const kept = entry(task);
    if (stored == nullptr || kept == nullptr) return std::nullopt;
    const auto versions = versionsIn(*kept);
    if (versions.empty()) return std::nullopt;
    return TaskConflict{
        .task = task,
        .present = versionOf(payloadOf(*stored)),
        .other = versionOf(versions.front())};
}

void TaskConflicts::useThisVersion(const Uuid& task) {
    CDSyncMeta* const kept = entry(task);
    if (kept == nullptr) return;
    auto versions = versionsIn(*kept);
    if (versions.size() < 2) {
        context_.remove(*kept);
        return;
    }
    versions.erase(versions.begin());
    setVersions(*kept, versions);
}

void TaskConflicts::useOtherVersion(const Uuid& task, const Clock& clock) {
    auto* const stored = context_.find<CDTask>(task);
    CDSyncMeta* const kept = entry(task);
    if (stored == nullptr || kept == nullptr) return;
    const auto versions = versionsIn(*kept);
    if (versions.empty()) return;
    apply(versions.front(), *stored);
    stored->updatedAt = clock.now();
    useThisVersion(task);
}

void TaskConflicts::keepBoth(const Uuid& task, const Clock& clock) {
    auto* const stored = context_.find<CDTask>(task);
    CDSyncMeta* const kept = entry(task);
    if (stored == nullptr || kept == nullptr) return;
    const auto versions = versionsIn(*kept);
    if (versions.empty()) return;
    CDTask& second = TaskService(clock).duplicate(context_, *stored);
    for (CDTag* label : stored->labels.all()) {
        second.labels.add(*label);
    }
    apply(versions.front(), second);
    useThisVersion(task);
}

void TaskConflicts::keep(CDTask& task, const JSONObject& version) {
    const auto id = task.id.get();
    if (!id || looksTheSame(version, payloadOf(task))) return;
    CDSyncMeta* kept = entry(*id);
    if (kept == nullptr) {
        kept = &context_.insert<CDSyncMeta>();
        kept->keyName = std::string(SyncLedger::conflictPrefix) + id->wireText();
    }
    auto versions = versionsIn(*kept);
    const bool isKept = std::ranges::find(versions, version) != versions.end();
    if (isKept) return;
    versions.push_back(version);
    setVersions(*kept, versions);
}

CDSyncMeta* TaskConflicts::entry(const Uuid& task) {
    const std::string name = std::string(SyncLedger::conflictPrefix) + task.wireText();
    return context_.fetchFirst<CDSyncMeta>({.predicate = {"key == %@", name}});
}

}  // namespace tesserine
