#include "sync/TreeMender.h"

#include "base/Text.h"
#include "core/services/Tree.h"
#include "core/store/ListedRow.h"
#include "core/store/StoreContext.h"

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
        std::ranges::sort(tags, {}, [](const CDTag* tag) {
            return std::pair(tag->createdAt.valueOr(Instant()), *tag->id);
        });
        for (std::size_t i = 1; i < tags.size(); ++i) {
            join(context, *tags.front(), *tags[i]);
        }
    }
}

}  // namespace

void mendTrees(StoreContext& context, const TouchedObjects& touched) {
    breakCycles<CDNotebook>(context, touched);
    breakCycles<CDTag>(context, touched);
    breakCycles<CDTask>(context, touched);
    joinTags(context, touched);
}

}  // namespace tesserine
