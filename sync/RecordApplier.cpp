#include "sync/RecordApplier.h"

#include "core/body/BodyError.h"
#include "core/body/CanonicalBody.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "sync/RecordFields.h"
#include "sync/RecordKinds.h"
#include "sync/TaskConflicts.h"

#include <algorithm>
#include <vector>

namespace tesserine {
namespace {

std::optional<std::string> textIn(const JSONObject& payload, const char* key) {
    const auto found = payload.find(key);
    if (found == payload.end() || found->second.string() == nullptr) return std::nullopt;
    return *found->second.string();
}

Instant updatedAtOf(const JSONObject& payload, Instant otherwise) {
    const auto found = payload.find("updated_at");
    if (found == payload.end()) return otherwise;
    const auto value = valueOf(found->second, AttributeType::date);
    return value && !isNull(*value) ? std::get<Instant>(*value) : otherwise;
}

/// The entity of a tombstone: its payload may say nothing.
std::optional<EntityKind> entityOfKind(std::string_view kind) {
    const auto* const found = std::ranges::find(recordKinds, kind, &RecordKind::name);
    return found == recordKinds.end() ? std::nullopt : std::optional(found->entity);
}

bool isSeen(CDSyncState* state, const SyncRecord& record) {
    return state != nullptr && state->rev.valueOr(0) > 0 && record.rev <= state->rev.valueOr(0);
}

void markSeen(CDSyncState& state, const SyncRecord& record) {
    state.rev = record.rev;
    state.seq = record.seq;
    state.updatedAt = record.updatedAt;
}

}  // namespace

RecordApplier::RecordApplier(StoreContext& context, SyncLedger& ledger, const Clock& clock, Log log)
    : context_(context),
      ledger_(ledger),
      mapper_(context, ledger.unresolved()),
      notes_(clock),
      projects_(clock),
      log_(std::move(log)) {}

void RecordApplier::apply(const SyncRecord& record) {
    if (isSeen(ledger_.find(record.id), record)) return;
    const auto entity =
        record.deleted ? entityOfKind(record.kind) : entityOf(record.kind, record.payload);
    if (!entity) return keepUnknown(record);
    try {
        if (record.deleted) {
            applyTombstone(record, *entity);
        } else {
            applyLive(record, *entity);
        }
        ++counts_.applied;
    } catch (const BodyError& error) {
        log_.warning("a record was left out: " + std::string(error.what()));
        keepUnknown(record);
    }
}

/// For a program that understands it one day.
void RecordApplier::keepUnknown(const SyncRecord& record) {
    CDSyncState& state = ledger_.at(record.id, record.kind);
    markSeen(state, record);
    SyncLedger::agree(state, record.payload);
    state.isTombstone = record.deleted;
}

bool RecordApplier::isChanged(StoreObject& object, CDSyncState* state) const {
    if (state == nullptr) return true;
    const auto agreed = SyncLedger::agreed(*state);
    return !agreed || mapper_.payload(object, *agreed) != *agreed;
}

// MARK: deletions

bool RecordApplier::wouldDelete(const SyncRecord& record) {
    const auto entity = record.deleted ? entityOfKind(record.kind) : std::nullopt;
    if (!entity || isSeen(ledger_.find(record.id), record)) return false;
    StoreObject* const object = context_.findObject(*entity, record.id);
    return object != nullptr && !isWorthKeeping(*object);
}

/// An edit beats a deletion; a file lives and dies with its note.
bool RecordApplier::isWorthKeeping(StoreObject& object) {
    const auto isEdited = [this](StoreObject& one) {
        const auto id = one.uuid();
        return id && isChanged(one, ledger_.find(*id));
    };
    if (isEdited(object)) return true;
    if (auto* const whole = dynamic_cast<CDNote*>(&object)) {
        if (whole->hasConflict) return true;  // the other version is on this device only
        return std::ranges::any_of(
            whole->attachments.all(), [&](CDAttachment* file) { return isEdited(*file); });
    }
    return false;
}

void RecordApplier::applyTombstone(const SyncRecord& record, EntityKind entity) {
    StoreObject* const object = context_.findObject(entity, record.id);
    CDSyncState& state = ledger_.at(record.id, record.kind);
    if (object != nullptr && isWorthKeeping(*object)) {
        keepOnTopOf(record, *object, state);
        return;
    }
    markSeen(state, record);
    state.isTombstone = true;
    state.needsPush = false;
    if (object == nullptr) return;
    remove(*object);
    ++counts_.deleted;
}

/// The object goes up again, on top of its tombstone, and its files with it: their own tombstones
/// may be still to come.
void RecordApplier::keepOnTopOf(
    const SyncRecord& tombstone, StoreObject& object, CDSyncState& state) {
    markSeen(state, tombstone);
    state.isTombstone = false;
    state.needsPush = true;
    SyncLedger::disagree(state);
    auto* const whole = dynamic_cast<CDNote*>(&object);
    if (whole == nullptr) return;
    for (CDAttachment* const file : whole->attachments.all()) {
        CDSyncState& fileState =
            ledger_.at(file->uuid().value_or(Uuid()), *recordKindOf(EntityKind::attachment));
        fileState.needsPush = true;
        SyncLedger::disagree(fileState);
    }
}

/// Subtasks go with their task, but not what was changed here.
void RecordApplier::keepChangedSubtasks(CDTask& task) {
    std::set<CDTask*> seen{&task};
    std::vector<CDTask*> open{&task};
    while (!open.empty()) {
        CDTask* const next = open.back();
        open.pop_back();
        for (CDTask* const subtask : next->subtasks.all()) {
            if (!seen.insert(subtask).second) continue;
            if (isWorthKeeping(*subtask)) {
                subtask->parent = nullptr;
            } else {
                open.push_back(subtask);
            }
        }
    }
}

void RecordApplier::remove(StoreObject& object) {
    if (auto* const task = dynamic_cast<CDTask*>(&object)) {
        keepChangedSubtasks(*task);
    }
    if (auto* const project = dynamic_cast<CDProject*>(&object)) {
        const auto tasks = project->tasks.all();
        context_.remove(object);
        if (tasks.empty()) return;
        CDProject& inbox = projects_.inbox(context_);
        for (CDTask* const task : tasks) {
            task->project = &inbox;
        }
        return;
    }
    context_.remove(object);
}

// MARK: live records

void RecordApplier::applyLive(const SyncRecord& record, EntityKind entity) {
    CDSyncState* const known = ledger_.find(record.id);
    StoreObject* object = context_.findObject(entity, record.id);
    const bool isNew = object == nullptr;
    if (isNew) object = &revive(record, entity, known);

    const auto base = known != nullptr && !isNew ? SyncLedger::agreed(*known) : std::nullopt;
    const JSONObject present = mapper_.payload(*object, base.value_or(JSONObject()));
    const JSONObject theirs = normalised(entity, record.payload, present);
    if (isNew) {
        mapper_.write(*object, present, theirs);
        arrived_.emplace_back(entity, record.id);
    } else if (isChanged(*object, known)) {
        merge(*object, present, theirs, base, record.updatedAt);
    } else {
        auto* const whole = dynamic_cast<CDNote*>(object);
        const bool isNewBody =
            whole != nullptr && textIn(present, "html") != textIn(theirs, "html");
        if (isNewBody) notes_.takeRevision(context_, *whole, NoteRevisionReason::preEdit);
        mapper_.write(*object, present, theirs);
    }
    touched_[entity].insert(record.id);

    CDSyncState& state = ledger_.at(record.id, record.kind);
    markSeen(state, record);
    state.isTombstone = false;
    SyncLedger::agree(state, theirs);
    state.needsPush = mapper_.payload(*object, theirs) != theirs;
}

/// A new object, or one that was deleted here while it was edited elsewhere.
StoreObject& RecordApplier::revive(
    const SyncRecord& record, EntityKind entity, CDSyncState* state) {
    StoreObject& object = context_.insertObject(entity);
    object.setValue(*object.entity().identity, record.id);
    if (state != nullptr && entity == EntityKind::note) reviveAttachments(record.id);
    return object;
}

/// The files of a note whose deletion was not sent yet: their bytes are still on the server.
void RecordApplier::reviveAttachments(const Uuid& noteID) {
    const std::string kind(*recordKindOf(EntityKind::attachment));
    const auto waiting = context_.fetch<CDSyncState>(
        {.predicate = {"kind == %@ AND isTombstone == YES AND needsPush == YES", kind}});
    for (CDSyncState* const state : waiting) {
        const auto agreed = SyncLedger::agreed(*state);
        const auto id = state->recordID.get();
        if (!agreed || !id || textIn(*agreed, "note_id") != noteID.wireText()) continue;
        if (context_.find<CDAttachment>(*id) != nullptr) continue;
        StoreObject& file = context_.insertObject(EntityKind::attachment);
        file.setValue(*file.entity().identity, *id);
        mapper_.write(file, mapper_.payload(file), *agreed);
        touched_[EntityKind::attachment].insert(*id);
        state->isTombstone = false;
        state->needsPush = false;
    }
}

void RecordApplier::merge(
    StoreObject& object,
    const JSONObject& present,
    const JSONObject& theirs,
    const std::optional<JSONObject>& base,
    Instant updatedAt) {
    const EntityKind entity = object.entity().kind;
    const RecordMerge merged = mergeRecords(
        entity,
        base,
        {.payload = present, .updatedAt = updatedAtOf(present, context_.now())},
        {.payload = theirs, .updatedAt = updatedAt});
    mapper_.write(object, present, merged.merged);
    const auto reason =
        merged.isConflict ? NoteRevisionReason::conflict : NoteRevisionReason::autosave;
    for (const JSONObject& version : merged.replaced) {
        keepVersion(object, version, reason);
    }
    if (merged.isConflict) ++counts_.conflicts;
}

void RecordApplier::keepVersion(
    StoreObject& object, const JSONObject& version, NoteRevisionReason reason) {
    if (auto* const whole = dynamic_cast<CDNote*>(&object)) {
        const auto html = textIn(version, "html");
        if (!html) return;
        CanonicalBody body = canonicalBody(*html);
        auto& kept = context_.insert<CDNoteRevision>();
        kept.createdAt = context_.now();
        kept.title = textIn(version, "title");
        kept.html = std::move(body.html);
        kept.plainText = std::move(body.plainText);
        kept.reason = std::string(rawValue(reason));
        kept.note = whole;
        if (reason == NoteRevisionReason::conflict) whole->hasConflict = true;
        return;
    }
    if (auto* const task = dynamic_cast<CDTask*>(&object)) {
        TaskConflicts(context_).keep(*task, version);
    }
}

// MARK: whole library

/// References of any record may have waited for what arrived.
void RecordApplier::resolveArrived() {
    std::vector<StoreObject*> objects;
    for (const auto& [entity, id] : arrived_) {
        if (StoreObject* const object = context_.findObject(entity, id)) objects.push_back(object);
    }
    mapper_.resolve(objects);
    arrived_.clear();
}

void RecordApplier::finish() {
    resolveArrived();
    mendTrees(context_, touched_);
    if (touched_.contains(EntityKind::project)) projects_.mergeInboxes(context_);
    // What came and went again before it was ever saved is in no history: nobody else would tell
    // the server.
    for (const auto& [entity, ids] : touched_) {
        for (const Uuid& id : ids) {
            if (context_.findObject(entity, id) == nullptr) ledger_.markDeleted(id);
        }
    }
    touched_.clear();
}

}  // namespace tesserine
