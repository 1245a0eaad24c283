#include "sync/SyncLedger.h"

#include "base/JSON.h"
#include "core/store/StoreContext.h"
#include "sync/WireCoding.h"

namespace tesserine {
namespace {

constexpr const char* unresolvedName = "unresolved";
constexpr const char* reclaimName = "reclaim";
constexpr const char* damagedName = "damaged";

}  // namespace

UnresolvedLinks& SyncLedger::unresolved() {
    if (!unresolved_) {
        storedUnresolved_ = value(unresolvedName).value_or("");
        unresolved_.emplace(storedUnresolved_);
    }
    return *unresolved_;
}

CDSyncState* SyncLedger::find(const Uuid& record) const {
    return context_.find<CDSyncState>(record);
}

CDSyncState& SyncLedger::at(const Uuid& record, std::string_view kind) const {
    if (auto* const found = find(record)) return *found;
    auto& made = context_.insert<CDSyncState>();
    made.recordID = record;
    made.kindName = std::string(kind);
    return made;
}

void SyncLedger::markDeleted(const Uuid& record) const {
    CDSyncState* const state = find(record);
    if (state == nullptr || state->isTombstone) return;
    const bool wasNeverSent = state->rev.valueOr(0) == 0 && !state->lastPushedAt;
    if (wasNeverSent) {
        context_.remove(*state);
        return;
    }
    state->isTombstone = true;
    state->needsPush = true;
    state->updatedAt = context_.now();
}

CDSyncMeta* SyncLedger::meta(const std::string& name) const {
    return context_.fetchFirst<CDSyncMeta>({.predicate = {"key == %@", name}});
}

std::optional<std::string> SyncLedger::value(const std::string& name) const {
    CDSyncMeta* const found = meta(name);
    return found == nullptr ? std::nullopt : found->value.get();
}

void SyncLedger::setValue(const std::string& name, const std::string& value) const {
    CDSyncMeta* entry = meta(name);
    if (entry == nullptr) {
        entry = &context_.insert<CDSyncMeta>();
        entry->keyName = name;
    }
    entry->value = value;
}

std::optional<JSONObject> SyncLedger::agreed(CDSyncState& state) {
    if (!state.lastPayload) return std::nullopt;
    try {
        const JSONValue json = JSONValue::decode(textOf(*state.lastPayload));
        return json.object() == nullptr ? std::nullopt : std::optional(*json.object());
    } catch (const WireError&) {
        return std::nullopt;
    }
}

void SyncLedger::agree(CDSyncState& state, const JSONObject& payload) {
    const std::string text = json::write(toJSON(payload));
    const auto bytes = bytesOf(text);
    state.lastPayload = Bytes(bytes.begin(), bytes.end());
}

void SyncLedger::keepUnresolved() {
    if (!unresolved_) return;
    std::string text = unresolved_->text();
    if (text == storedUnresolved_) return;
    setValue(unresolvedName, text);
    storedUnresolved_ = std::move(text);
}

std::set<std::string> SyncLedger::reclaimable() const { return digests(reclaimName); }

void SyncLedger::setReclaimable(const std::set<std::string>& digests) const {
    setDigests(reclaimName, digests);
}

std::set<std::string> SyncLedger::damagedFiles() const { return digests(damagedName); }

void SyncLedger::setDamaged(const std::string& digest, bool isDamaged) const {
    auto damaged = damagedFiles();
    const bool isChanged = isDamaged ? damaged.insert(digest).second : damaged.erase(digest) > 0;
    if (isChanged) setDigests(damagedName, damaged);
}

std::set<std::string> SyncLedger::digests(const char* name) const {
    std::set<std::string> digests;
    const JSONValue stored = JSONValue::decode(value(name).value_or("[]"));
    if (stored.array() == nullptr) return digests;
    for (const JSONValue& digest : *stored.array()) {
        if (digest.string() != nullptr) digests.insert(*digest.string());
    }
    return digests;
}

void SyncLedger::setDigests(const char* name, const std::set<std::string>& digests) const {
    const JSONValue list = JSONValue::Array(digests.begin(), digests.end());
    setValue(name, json::write(list.toJSON()));
}

void SyncLedger::forgetAll() const {
    for (CDSyncState* state : context_.fetch<CDSyncState>()) {
        context_.remove(*state);
    }
    for (CDSyncMeta* entry : context_.fetch<CDSyncMeta>()) {
        const std::string name = entry->keyName.valueOr("");
        const bool stays = name == account || name.starts_with(conflictPrefix);
        if (!stays) context_.remove(*entry);
    }
}

}  // namespace tesserine
