#include "sync/RecordPusher.h"

#include "base/FailPoint.h"
#include "base/JSON.h"
#include "base/OperationCancelled.h"
#include "core/store/StoreContext.h"
#include "sync/RecordKinds.h"
#include "sync/WireCoding.h"

#include <algorithm>

namespace tesserine {
namespace {

std::optional<EntityKind> entityOfState(CDSyncState& state) {
    const auto* const found =
        std::ranges::find(recordKinds, state.kindName.valueOr(""), &RecordKind::name);
    return found == recordKinds.end() ? std::nullopt : std::optional(found->entity);
}

/// Big texts that a file's record can do without when it is too large.
void dropRecognisedText(JSONObject& payload) {
    payload["ocr_text"] = JSONValue();
    payload["extracted_text"] = JSONValue();
}

/// The file of a deleted record may be the last of its kind.
void offerFile(CDSyncState& state, SyncLedger& ledger) {
    const auto agreed = SyncLedger::agreed(state);
    if (!agreed) return;
    const auto digest = agreed->find("sha256");
    if (digest == agreed->end() || digest->second.string() == nullptr) return;
    auto digests = ledger.reclaimable();
    digests.insert(*digest->second.string());
    ledger.setReclaimable(digests);
}

/// Whether the service will not take this file, while it may take anything else.
bool isFinalForAFile(const SyncError& error) {
    const bool isAnswer = error.kind() == SyncError::Kind::server;
    return isAnswer && (error.problem().status == storageIsFull || !error.isTransient());
}

const SyncRecord* newest(const std::vector<SyncRecord>& versions) {
    const auto found = std::ranges::max_element(versions, {}, &SyncRecord::updatedAt);
    return found == versions.end() ? nullptr : &*found;
}

}  // namespace

/// What the library remembers, as it was before the request that is being made.
struct RecordPusher::Knowledge {
    explicit Knowledge(StoreContext& context)
        : ledger(context), refusals(ledger.value(SyncLedger::refusals).value_or("")) {}

    SyncLedger ledger;
    PushRefusals refusals;
};

RecordPusher::Counts RecordPusher::pushAll(const std::stop_token& stop) {
    environment_.context.reset();
    counts_ = {};
    const std::vector<Uuid> waiting = recordsToPush(environment_.context);
    Sending sending;
    std::optional<Knowledge> knowledge;  // read once for each request
    for (const Uuid& record : waiting) {
        if (stop.stop_requested()) throw OperationCancelled();
        if (!knowledge) knowledge.emplace(environment_.context);
        auto push = pushFor(record, *knowledge);
        if (!push) continue;
        const std::size_t size = json::write(wire::encode(*push)).size();
        const bool isFull = sending.pushes.size() == recordsAtOnce
                            || (!sending.pushes.empty() && sending.bytes + size > bytesAtOnce);
        if (isFull) {
            send(sending, stop);
            knowledge.reset();
        }
        sending.bytes += size;
        sending.pushes.push_back(*std::move(push));
    }
    if (!sending.pushes.empty()) send(sending, stop);
    return counts_;
}

std::optional<SyncPush> RecordPusher::pushFor(const Uuid& record, Knowledge& knowledge) {
    auto& [ledger, refusals] = knowledge;
    CDSyncState* const state = ledger.find(record);
    const auto entity = state == nullptr ? std::nullopt : entityOfState(*state);
    if (!entity) return std::nullopt;
    SyncPush push{
        .id = record,
        .kind = state->kindName.valueOr(""),
        .baseRev = state->rev.valueOr(0),
        .updatedAt = state->updatedAt.valueOr(environment_.clock.now())};
    StoreObject* const object = environment_.context.findObject(*entity, record);
    if (object == nullptr) {
        push.deleted = true;
        return push;
    }
    const RecordMapper mapper(environment_.context, ledger.unresolved());
    const auto agreed = SyncLedger::agreed(*state);
    push.payload = mapper.payload(*object, agreed.value_or(JSONObject()));
    if (!refusals.holds(record, payloadDigest(push.payload))) return push;
    const bool mayBeCut =
        *entity == EntityKind::attachment && refusals.all().at(record).reason == "too_large";
    if (!mayBeCut) return std::nullopt;
    dropRecognisedText(push.payload);
    if (refusals.holds(record, payloadDigest(push.payload))) return std::nullopt;
    return push;
}

void RecordPusher::send(Sending& sending, const std::stop_token& stop) {
    uploadFiles(sending, stop);
    {
        // Before the request: should its answer be lost, a later deletion must be sent as well.
        SyncLedger ledger(environment_.context);
        for (const SyncPush& push : sending.pushes) {
            ledger.at(push.id, push.kind).lastPushedAt = environment_.clock.now();
        }
        environment_.context.save();
    }
    if (sending.pushes.empty()) {
        sending = {};
        return;
    }
    const PushResponse response = environment_.client.push(sending.pushes, stop);
    const auto displaced = displacedVersions(response, stop);
    FAIL_POINT("sync.pushAnswered");

    environment_.context.reset();  // see what was changed while the server was asked
    SyncLedger ledger(environment_.context);
    RecordApplier applier(environment_.context, ledger, environment_.clock, environment_.log);
    PushRefusals refusals(ledger.value(SyncLedger::refusals).value_or(""));
    std::map<Uuid, const PushResult*> results;
    for (const PushResult& result : response.results) {
        results.emplace(result.id, &result);  // the first of several counts
    }
    for (const SyncPush& push : sending.pushes) {
        const auto found = results.find(push.id);
        if (found == results.end()) continue;  // unanswered: it stays marked
        settle(push, *found->second, ledger, applier, refusals);
        const auto versions = displaced.find(push.id);
        const auto entity = entityOf(push.kind, push.payload);
        if (versions == displaced.end() || !entity) continue;
        StoreObject* const object = environment_.context.findObject(*entity, push.id);
        const SyncRecord* const loser = newest(versions->second);
        if (object == nullptr || loser == nullptr) continue;
        applier.keepVersion(*object, loser->payload, NoteRevisionReason::conflict);
        ++counts_.conflicts;
    }
    applier.finish();
    counts_.conflicts += applier.counts().conflicts;
    ledger.setValue(SyncLedger::refusals, refusals.text());
    ledger.keepUnresolved();
    environment_.context.save();
    environment_.context.reset();
    sending = {};
}

/// Versions that our changes took the place of; they live on the server only.
std::map<Uuid, std::vector<SyncRecord>> RecordPusher::displacedVersions(
    const PushResponse& response, const std::stop_token& stop) {
    std::map<Uuid, std::vector<SyncRecord>> versions;
    for (const PushResult& result : response.results) {
        const bool isDisplaced = result.status == "applied" && result.displaced.value_or(false);
        if (isDisplaced) versions[result.id] = environment_.client.revisions(result.id, stop);
    }
    return versions;
}

void RecordPusher::settle(
    const SyncPush& push,
    const PushResult& result,
    SyncLedger& ledger,
    RecordApplier& applier,
    PushRefusals& refusals) {
    if (result.status == "applied") {
        settleApplied(push, result, ledger, applier);
        refusals.remove(push.id);
        ++counts_.sent;
    } else if (result.status == "superseded") {
        // Without the server's copy the next pull brings it.
        if (result.server && result.server->id == push.id) applier.apply(*result.server);
        ++counts_.sent;
    } else if (result.reason == "missing_attachment" && isLostFile(push.id, ledger)) {
        environment_.context.remove(*environment_.context.find<CDAttachment>(push.id));
    } else {
        refusals.add(
            push.id,
            {.reason = result.reason.value_or(result.status),
             .message = result.message.value_or(""),
             .limit = result.limit,
             .measured = result.measured,
             .digest = payloadDigest(push.payload)});
        ++counts_.refused;
    }
}

/// Deleted elsewhere before it had come here, and kept for its note, which was edited: nobody has
/// its bytes any more.
bool RecordPusher::isLostFile(const Uuid& record, const SyncLedger& ledger) {
    const auto* const file = environment_.context.find<CDAttachment>(record);
    CDSyncState* const state = ledger.find(record);
    const bool wasDeleted =
        state != nullptr && state->rev.valueOr(0) > 0 && !SyncLedger::agreed(*state);
    return wasDeleted && file != nullptr && !file->fileData;
}

void RecordPusher::settleApplied(
    const SyncPush& push, const PushResult& result, SyncLedger& ledger, RecordApplier& applier) {
    CDSyncState& state = ledger.at(push.id, push.kind);
    if (result.rev) state.rev = *result.rev;
    if (result.seq) state.seq = *result.seq;
    state.lastPushedAt = environment_.clock.now();
    if (push.deleted && push.kind == "attachment") offerFile(state, ledger);
    SyncLedger::agree(state, push.payload);

    const auto entity = entityOfState(state);
    StoreObject* const object =
        entity ? environment_.context.findObject(*entity, push.id) : nullptr;
    if (object == nullptr) {
        state.isTombstone = true;
        state.needsPush = !push.deleted;  // deleted while it was being sent
        return;
    }
    state.isTombstone = false;
    state.needsPush = push.deleted || applier.isChanged(*object, &state);
}

/// Files go up before the records that name them; what names a file that found no place stays here.
void RecordPusher::uploadFiles(Sending& sending, const std::stop_token& stop) {
    std::map<std::string, Uuid> byDigest;
    for (const SyncPush& push : sending.pushes) {
        if (push.kind != "attachment" || push.deleted) continue;
        auto* const file = environment_.context.find<CDAttachment>(push.id);
        const bool hasBytes = file != nullptr && file->sha256 && file->fileData;
        if (hasBytes) byDigest.emplace(*file->sha256, push.id);
    }
    if (byDigest.empty()) return;
    std::vector<std::string> digests;
    digests.reserve(byDigest.size());
    for (const auto& one : byDigest) {
        digests.push_back(one.first);
    }
    for (const std::string& digest : environment_.client.missingBlobs(digests, stop)) {
        const auto found = byDigest.find(digest);
        if (found == byDigest.end()) continue;
        auto* const file = environment_.context.find<CDAttachment>(found->second);
        try {
            environment_.client.uploadBlob(
                *file->fileData, digest, file->mimeType.valueOr("application/octet-stream"), stop);
        } catch (const SyncError& error) {
            if (!isFinalForAFile(error)) throw;
            refuse(sending, digest, error);
        }
    }
    environment_.context.releaseLargeValues();
}

/// Takes out the records that name the file: the others need not wait for it.
void RecordPusher::refuse(Sending& sending, const std::string& digest, const SyncError& error) {
    const SyncLedger ledger(environment_.context);
    PushRefusals refusals(ledger.value(SyncLedger::refusals).value_or(""));
    const bool isFull = error.problem().status == storageIsFull;
    std::erase_if(sending.pushes, [&](const SyncPush& push) {
        const auto member = push.payload.find("sha256");
        const bool isMeant = push.kind == "attachment" && member != push.payload.end()
                             && member->second == JSONValue(digest);
        if (!isMeant) return false;
        auto* const file = environment_.context.find<CDAttachment>(push.id);
        refusals.add(
            push.id,
            {.reason = isFull ? PushRefusal::storageFull : PushRefusal::fileRefused,
             .message = error.what(),
             .measured = file->byteCount.valueOr(0),
             .digest = payloadDigest(push.payload)});
        ++counts_.refused;
        return true;
    });
    ledger.setValue(SyncLedger::refusals, refusals.text());
}

}  // namespace tesserine
