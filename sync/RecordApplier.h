#pragma once

#include "base/Log.h"
#include "core/services/NoteService.h"
#include "core/tasks/ProjectService.h"
#include "sync/RecordMapper.h"
#include "sync/RecordMerge.h"
#include "sync/SyncLedger.h"
#include "sync/TreeMender.h"
#include "sync/WireRecords.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tesserine {

/// Brings what the server holds into the library.
///
/// Decides by revisions: what we have seen already changes nothing. What was changed here since
/// both sides agreed is merged, never overwritten; of two texts for one place the loser is kept as
/// a revision of the note. An edit beats a deletion. Works in the context it is given and never
/// saves.
class RecordApplier {
public:
    struct Counts {
        std::size_t applied = 0;
        std::size_t deleted = 0;
        std::size_t conflicts = 0;
    };

    RecordApplier(StoreContext& context, SyncLedger& ledger, const Clock& clock, Log log);

    void apply(const SyncRecord& record);
    /// To be called after the last record of a page: draws the references that waited, mends what
    /// no single record could see (cycles of parents, tags of one name, several Inboxes), and tells
    /// of what did not stay.
    void finish();
    /// Whether `record` would delete something that was not changed here.
    bool wouldDelete(const SyncRecord& record);

    /// Whether the object holds something that the server does not know.
    bool isChanged(StoreObject& object, CDSyncState* state) const;
    /// Keeps a version of a record that did not win: of a note as a revision, of a task for
    /// a choice (`TaskConflicts`).
    void keepVersion(StoreObject& object, const JSONObject& version, NoteRevisionReason reason);

    const RecordMapper& mapper() const { return mapper_; }
    const Counts& counts() const { return counts_; }

private:
    void resolveArrived();
    void keepUnknown(const SyncRecord& record);
    void applyTombstone(const SyncRecord& record, EntityKind entity);
    void applyLive(const SyncRecord& record, EntityKind entity);
    StoreObject& revive(const SyncRecord& record, EntityKind entity, CDSyncState* state);
    void reviveAttachments(const Uuid& note);
    bool isWorthKeeping(StoreObject& object);
    void keepOnTopOf(const SyncRecord& tombstone, StoreObject& object, CDSyncState& state);
    void keepChangedSubtasks(CDTask& task);
    void remove(StoreObject& object);
    void merge(
        StoreObject& object,
        const JSONObject& present,
        const JSONObject& theirs,
        const std::optional<JSONObject>& base,
        Instant updatedAt);

    StoreContext& context_;
    SyncLedger& ledger_;
    RecordMapper mapper_;
    NoteService notes_;
    ProjectService projects_;
    Log log_;
    Counts counts_;
    // Since `finish`.
    TouchedObjects touched_;
    std::vector<std::pair<EntityKind, Uuid>> arrived_;
};

}  // namespace tesserine
