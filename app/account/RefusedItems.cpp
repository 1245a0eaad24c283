#include "app/account/RefusedItems.h"

#include "app/state/DateWords.h"
#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "sync/PushBatch.h"
#include "sync/SyncLedger.h"

#include <algorithm>
#include <tuple>

namespace tesserine::app {
namespace {

std::string named(const std::optional<std::string>& name, const char* fallback) {
    return name && !name->empty() ? *name : fallback;
}

std::string titleOf(StoreContext& context, const Uuid& record) {
    if (const auto* note = context.find<CDNote>(record)) {
        return named(note->title.valueOr(""), "Untitled note");
    }
    if (const auto* task = context.find<CDTask>(record)) {
        return named(task->title.valueOr(""), "Untitled task");
    }
    if (const auto* file = context.find<CDAttachment>(record)) {
        return named(file->filename.valueOr(""), "Unnamed file");
    }
    return "Something else in the library";
}

std::string sizeText(std::int64_t bytes) { return shownSize(bytes).toStdString(); }

std::string sentenceOf(const PushRefusal& refusal) {
    if (!refusal.message.empty()) return refusal.message;
    if (refusal.reason == "quota") return "There is no room left for it at the service.";
    if (refusal.reason == "missing_attachment") return "One of its files is not there yet.";
    if (refusal.reason == "too_large" && refusal.limit && refusal.measured) {
        return "It takes " + sizeText(*refusal.measured) + ", and the service takes "
               + sizeText(*refusal.limit) + " at most.";
    }
    if (refusal.reason == "too_large") return "It is larger than the service takes.";
    return "The service did not take it (" + refusal.reason + ").";
}

}  // namespace

std::vector<RefusedItem> refusedItems(StoreContext& context) {
    const SyncLedger ledger(context);
    const PushRefusals refusals(ledger.value(SyncLedger::refusals).value_or(""));
    std::vector<RefusedItem> items;
    for (const auto& [record, refusal] : refusals.all()) {
        items.push_back({titleOf(context, record), sentenceOf(refusal)});
    }
    std::ranges::sort(
        items, {}, [](const RefusedItem& item) { return std::tie(item.title, item.sentence); });
    return items;
}

}  // namespace tesserine::app
