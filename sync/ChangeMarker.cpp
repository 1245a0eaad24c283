#include "sync/ChangeMarker.h"

#include "base/OperationCancelled.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "sync/RecordFields.h"
#include "sync/RecordKinds.h"
#include "sync/RecordMapper.h"
#include "sync/SyncLedger.h"

#include <charconv>
#include <map>
#include <optional>

namespace tesserine {
namespace {

constexpr std::size_t transactionsAtOnce = 200;
constexpr std::size_t objectsAtOnce = 500;
constexpr const char* followerName = "sync";

/// Marks one record when it differs from what the server knows.
class Examination {
public:
    explicit Examination(StoreContext& context)
        : context_(context), ledger_(context), mapper_(context, ledger_.unresolved()) {}

    void look(EntityKind entity, const Uuid& id) {
        StoreObject* const object = context_.findObject(entity, id);
        if (object == nullptr) {
            ledger_.markDeleted(id);
        } else {
            markChanged(*object, id);
        }
    }
    SyncLedger& ledger() { return ledger_; }

private:
    void markChanged(StoreObject& object, const Uuid& id) {
        CDSyncState& state = ledger_.at(id, *recordKindOf(object.entity().kind));
        const auto agreed = SyncLedger::agreed(state);
        const JSONObject payload = mapper_.payload(object, agreed.value_or(JSONObject()));
        const bool isSame = agreed && payload == *agreed;
        state.needsPush = !isSame;
        state.isTombstone = false;
        if (isSame) return;
        const auto updated = payload.find("updated_at");
        const auto date =
            updated == payload.end() ? std::nullopt : valueOf(updated->second, AttributeType::date);
        const bool hasDate = date && !isNull(*date);
        state.updatedAt = hasDate ? std::get<Instant>(*date) : context_.now();
    }

    StoreContext& context_;
    SyncLedger ledger_;
    RecordMapper mapper_;
};

void stopIfAsked(const std::stop_token& stop) {
    if (stop.stop_requested()) throw OperationCancelled();
}

}  // namespace

void ChangeMarker::catchUp(StoreContext& context, const std::stop_token& stop) {
    const std::string mark = SyncLedger(context).value(SyncLedger::historyMark).value_or("");
    const std::size_t space = mark.find(' ');
    std::int64_t number = 0;
    const bool isOurs = space != std::string::npos && mark.substr(0, space) == store_.historyID();
    if (isOurs) std::from_chars(mark.data() + space + 1, mark.data() + mark.size(), number);
    if (isOurs && store_.keepsHistoryAfter(number)) {
        examineHistory(context, number, stop);
    } else {
        examineAll(context, stop);
    }
}

void ChangeMarker::examineHistory(
    StoreContext& context, std::int64_t from, const std::stop_token& stop) {
    for (;;) {
        const auto transactions = store_.history(from, transactionsAtOnce);
        if (transactions.empty()) return;
        std::map<Uuid, EntityKind> changed;
        for (const StoreTransaction& transaction : transactions) {
            from = transaction.number;
            for (const ObjectChange& change : transaction.changes) {
                if (change.uuid && recordKindOf(change.entity)) {
                    changed.emplace(*change.uuid, change.entity);
                }
            }
        }
        // Our own bookkeeping is history too: noting that would never end.
        const bool isLast = transactions.size() < transactionsAtOnce;
        if (changed.empty() && isLast) return;
        context.reset();
        Examination examination(context);
        std::size_t count = 0;
        for (const auto& [id, entity] : changed) {
            stopIfAsked(stop);
            examination.look(entity, id);
            // Not all at once: a single transaction may have brought a whole library.
            if (++count % objectsAtOnce > 0) continue;
            context.save();
            context.reset();
        }
        keepMark(examination.ledger(), from);
        context.save();
        store_.setHistoryMark(followerName, from);
    }
}

void ChangeMarker::examineAll(StoreContext& context, const std::stop_token& stop) {
    const std::int64_t from = store_.lastTransactionNumber();
    for (const RecordKind& kind : recordKinds) {
        for (std::size_t offset = 0;; offset += objectsAtOnce) {
            stopIfAsked(stop);
            context.reset();
            const auto objects =
                context.fetchObjects(kind.entity, {.limit = objectsAtOnce, .offset = offset});
            Examination examination(context);
            for (StoreObject* const object : objects) {
                if (const auto id = object->uuid()) examination.look(kind.entity, *id);
            }
            context.save();
            if (objects.size() < objectsAtOnce) break;
        }
    }
    context.reset();
    SyncLedger ledger(context);
    keepMark(ledger, from);
    context.save();
    store_.setHistoryMark(followerName, from);
}

void ChangeMarker::keepMark(SyncLedger& ledger, std::int64_t number) {
    ledger.setValue(SyncLedger::historyMark, store_.historyID() + " " + std::to_string(number));
}

}  // namespace tesserine
