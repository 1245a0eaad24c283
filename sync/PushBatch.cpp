#include "sync/PushBatch.h"

#include "base/Digest.h"
#include "base/Encoding.h"
#include "base/JSON.h"
#include "core/model/TaskEntities.h"
#include "core/services/Tree.h"
#include "core/store/StoreContext.h"
#include "sync/RecordKinds.h"
#include "sync/WireCoding.h"

#include <algorithm>
#include <tuple>

namespace tesserine {
namespace {

struct Waiting {
    bool isDeletion;
    std::size_t kind;
    std::size_t depth;
    Uuid id;
    auto order() const { return std::tie(isDeletion, kind, depth, id); }
};

template <class Entity>
std::size_t depthOf(StoreContext& context, const Uuid& id) {
    const Entity* const object = context.find<Entity>(id);
    return object == nullptr ? 0 : tree::ancestors(*object).size();
}

std::size_t depthOf(StoreContext& context, EntityKind entity, const Uuid& id) {
    switch (entity) {
    case EntityKind::notebook: return depthOf<CDNotebook>(context, id);
    case EntityKind::tag: return depthOf<CDTag>(context, id);
    case EntityKind::task: return depthOf<CDTask>(context, id);
    default: return 0;
    }
}

std::string textOrEmpty(const JSONValue& object, std::string_view key) {
    const JSONValue* const member = object.member(key);
    return member == nullptr || member->string() == nullptr ? "" : *member->string();
}

std::optional<std::int64_t> numberMember(const JSONValue& object, std::string_view key) {
    const JSONValue* const member = object.member(key);
    if (member == nullptr || member->number() == nullptr) return std::nullopt;
    return static_cast<std::int64_t>(*member->number());
}

}  // namespace

std::vector<Uuid> recordsToPush(StoreContext& context) {
    std::vector<Waiting> waiting;
    const auto add = [&](const ListedRow& state) {
        const auto id = state.get(&CDSyncState::recordID);
        const auto name = state.get(&CDSyncState::kindName);
        const auto* const kind =
            std::ranges::find(recordKinds, name.value_or(""), &RecordKind::name);
        if (!id || kind == recordKinds.end()) return;
        waiting.push_back(
            {.isDeletion = state.get(&CDSyncState::isTombstone).value_or(false),
             .kind = static_cast<std::size_t>(kind - recordKinds.begin()),
             .depth = depthOf(context, kind->entity, *id),
             .id = *id});
    };
    context.visitRows<CDSyncState>({.predicate = {"needsPush == YES"}}, add);
    std::ranges::sort(
        waiting, [](const Waiting& a, const Waiting& b) { return a.order() < b.order(); });
    std::vector<Uuid> ids;
    ids.reserve(waiting.size());
    for (const Waiting& one : waiting) {
        ids.push_back(one.id);
    }
    return ids;
}

PushRefusals::PushRefusals(const std::string& text) {
    JSONValue json;
    try {
        json = JSONValue::decode(text);
    } catch (const WireError&) {
        return;
    }
    if (json.object() == nullptr) return;
    for (const auto& [name, refusal] : *json.object()) {
        const auto record = Uuid::parse(name);
        if (!record) continue;
        add(*record,
            {.reason = textOrEmpty(refusal, "reason"),
             .message = textOrEmpty(refusal, "message"),
             .limit = numberMember(refusal, "limit"),
             .measured = numberMember(refusal, "measured"),
             .digest = textOrEmpty(refusal, "digest")});
    }
}

std::string PushRefusals::text() const {
    const auto number = [](const std::optional<std::int64_t>& count) {
        return count ? JSONValue(*count) : JSONValue();
    };
    JSONObject records;
    for (const auto& [record, refusal] : refusals_) {
        records[record.wireText()] = JSONObject{
            {"reason", refusal.reason},
            {"message", refusal.message},
            {"limit", number(refusal.limit)},
            {"measured", number(refusal.measured)},
            {"digest", refusal.digest}};
    }
    return json::write(toJSON(records));
}

std::optional<std::int64_t> PushRefusals::smallest(const std::string& reason) const {
    std::optional<std::int64_t> size;
    for (const auto& [record, refusal] : refusals_) {
        if (refusal.reason != reason) continue;
        const std::int64_t measured = refusal.measured.value_or(0);
        size = size ? std::min(*size, measured) : measured;
    }
    return size;
}

void PushRefusals::forget(const std::string& reason) {
    std::erase_if(refusals_, [&](const auto& one) { return one.second.reason == reason; });
}

bool PushRefusals::holds(const Uuid& record, const std::string& digest) const {
    const auto found = refusals_.find(record);
    return found != refusals_.end() && found->second.digest == digest;
}

std::string payloadDigest(const JSONObject& payload) {
    return sha256Hex(bytesOf(json::write(toJSON(payload))));
}

}  // namespace tesserine
