#include "sync/TreeMender.h"

#include "base/Text.h"
#include "core/services/Tree.h"
#include "core/store/ListedRow.h"
#include "core/store/StoreContext.h"
#include "sync/SyncLedger.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

const std::set<Uuid>& touchedOf(const TouchedObjects& touched, EntityKind kind) {
    static const std::set<Uuid> none;
    const auto found = touched.find(kind);
    return found == touched.end() ? none : found->second;
}

/// Of the objects of a ring the one with the smallest identifier comes to the top.
template <class Entity>
void breakCycles(StoreContext& context, const TouchedObjects& touched) {
    for (const Uuid& id : touchedOf(touched, Entity::kind)) {
        auto* const object = context.find<Entity>(id);
        if (object == nullptr) continue;
        const auto above = tree::ancestors(*object);
        const bool isInCycle = !above.empty() && above.back()->parent.get() == object;
        if (!isInCycle) continue;
        Entity* first = object;
        for (Entity* const other : above) {
            if (other->uuid() < first->uuid()) first = other;
        }
        first->parent = nullptr;
    }
}

/// Everything that hangs on `twin` goes over to `survivor`.
void join(StoreContext& context, CDTag& survivor, CDTag& twin) {
    for (CDNote* const note : twin.notes.all()) {
        survivor.notes.add(*note);
    }
    for (CDTask* const task : twin.tasks.all()) {
        survivor.tasks.add(*task);
    }
    for (CDTag* const child : twin.children.all()) {
        const bool isAbove = tree::isWithin(survivor, *child);
        child->parent = isAbove ? nullptr : &survivor;
    }
    context.remove(twin);
}

void join(StoreContext& context, CDNotebook& survivor, CDNotebook& twin) {
    for (CDNote* const note : twin.notes.all()) {
        note->notebook = &survivor;
    }
    for (CDNotebook* const child : twin.children.all()) {
        child->parent = &survivor;
    }
    context.remove(twin);
}

/// All become the one that is the oldest on every device alike; returns it.
template <class Entity>
Entity& joinAll(StoreContext& context, std::vector<Entity*> twins) {
    std::ranges::sort(twins, {}, [](const Entity* twin) {
        return std::pair(twin->createdAt.valueOr(Instant()), *twin->id);
    });
    for (std::size_t i = 1; i < twins.size(); ++i) {
        join(context, *twins.front(), *twins[i]);
    }
    return *twins.front();
}

/// The tags that share a name, ignoring case, with a touched one.
std::map<std::string, std::vector<Uuid>> namesakes(
    StoreContext& context, const std::set<Uuid>& touched) {
    std::map<std::string, std::vector<Uuid>> byName;
    for (const Uuid& id : touched) {
        const CDTag* const tag = context.find<CDTag>(id);
        const std::string name = tag == nullptr ? "" : text::caseFolded(tag->name.valueOr(""));
        if (!name.empty()) byName[name];
    }
    if (byName.empty()) return byName;
    context.visitRows<CDTag>({}, [&](const ListedRow& row) {
        const auto found = byName.find(text::caseFolded(row.get(&CDTag::name).value_or("")));
        const auto id = row.get(&CDTag::id);
        if (found != byName.end() && id) found->second.push_back(*id);
    });
    return byName;
}

/// Tags of one name become the oldest of them.
void joinTags(StoreContext& context, const TouchedObjects& touched) {
    for (const auto& [name, ids] : namesakes(context, touchedOf(touched, EntityKind::tag))) {
        if (ids.size() < 2) continue;
        std::vector<CDTag*> tags;
        for (const Uuid& id : ids) {
            tags.push_back(context.find<CDTag>(id));
        }
        joinAll(context, std::move(tags));
    }
}

/// The notebooks directly below `parent`, or at the top, by their names.
std::map<std::string, std::vector<CDNotebook*>> notebooksBelow(
    StoreContext& context, CDNotebook* parent) {
    std::map<std::string, std::vector<CDNotebook*>> byName;
    const auto below = parent == nullptr
                           ? context.fetch<CDNotebook>({.predicate = {"parent == nil"}})
                           : parent->children.all();
    for (CDNotebook* const notebook : below) {
        if (notebook->id) byName[text::caseFolded(notebook->name.valueOr(""))].push_back(notebook);
    }
    return byName;
}

}  // namespace

void mendTrees(StoreContext& context, const TouchedObjects& touched) {
    breakCycles<CDNotebook>(context, touched);
    breakCycles<CDTag>(context, touched);
    breakCycles<CDTask>(context, touched);
    joinTags(context, touched);
}

void joinNotebooks(StoreContext& context, const SyncLedger& ledger) {
    const auto isKnown = [&ledger](const CDNotebook* notebook) {
        const CDSyncState* const state = ledger.find(*notebook->id);
        return state != nullptr && state->rev.valueOr(0) > 0;
    };
    // From the top down: what was joined has the notebooks of both below it.
    std::vector<CDNotebook*> parents{nullptr};
    for (std::size_t i = 0; i < parents.size(); ++i) {
        for (auto& [name, notebooks] : notebooksBelow(context, parents[i])) {
            const auto known = std::ranges::count_if(notebooks, isKnown);
            const bool areTwins =
                known > 0 && known < static_cast<std::ptrdiff_t>(notebooks.size());
            if (areTwins) notebooks = {&joinAll(context, notebooks)};
            parents.insert(parents.end(), notebooks.begin(), notebooks.end());
        }
    }
}

}  // namespace tesserine
