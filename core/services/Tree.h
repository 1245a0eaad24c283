#pragma once

#include "base/Text.h"
#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

/// Walks over trees of notebooks, tags or tasks. What sync or a damaged file brings may hold a
/// cycle: every walk visits an object once, so it ends, and none recurses.
namespace tesserine::tree {

/// One line of a tree that is listed from top to bottom; `depth` is 0 at the top.
template <class Entity>
struct Row {
    Entity* object = nullptr;
    std::size_t depth = 0;
};

/// The parents of `object`, nearest first.
template <class Entity>
std::vector<Entity*> ancestors(const Entity& object) {
    std::vector<Entity*> result;
    std::unordered_set<const Entity*> visited{&object};
    for (Entity* parent = object.parent; parent != nullptr; parent = parent->parent) {
        if (!visited.insert(parent).second) break;
        result.push_back(parent);
    }
    return result;
}

/// Whether `object` is `root` or stands somewhere below it.
template <class Entity>
bool isWithin(const Entity& object, const Entity& root) {
    if (&object == &root) return true;
    const auto above = ancestors(object);
    return std::find(above.begin(), above.end(), &root) != above.end();
}

/// Everything below `root`, each object before its children; without `root` itself.
template <class Entity>
std::vector<Entity*> descendants(const Entity& root) {
    std::vector<Entity*> result;
    std::unordered_set<const Entity*> visited{&root};
    std::vector<const Entity*> open{&root};
    while (!open.empty()) {
        const Entity* next = open.back();
        open.pop_back();
        for (Entity* child : next->children.all()) {
            if (!visited.insert(child).second) continue;
            result.push_back(child);
            open.push_back(child);
        }
    }
    return result;
}

/// The names from the top down to `object`, as "Work / Projects / 2026".
template <class Entity>
std::string pathText(const Entity& object) {
    std::string path = object.name.valueOr("");
    for (const Entity* parent : ancestors(object)) {
        path.insert(0, parent->name.valueOr("") + " / ");
    }
    return path;
}

/// Sorts by name as a reader expects, ignoring case; equal names by `id`.
template <class Entity>
void sortByName(std::vector<Entity*>& objects, const text::Collator& collator) {
    std::sort(objects.begin(), objects.end(), [&](const Entity* a, const Entity* b) {
        const int order = collator.compare(a->name.valueOr(""), b->name.valueOr(""));
        return order != 0 ? order < 0 : a->id.get() < b->id.get();
    });
}

/// `all` as a tree, each level in the order of `all`, children after their parent. An object that
/// a cycle keeps from the top is listed at the top, so that nothing is hidden.
template <class Entity>
std::vector<Row<Entity>> rows(const std::vector<Entity*>& all) {
    std::unordered_map<const Entity*, std::vector<Entity*>> children;
    std::vector<Row<Entity>> open;
    for (auto next = all.rbegin(); next != all.rend(); ++next) {  // `open` is taken from the back
        Entity* parent = (*next)->parent;
        children[parent].push_back(*next);
        open.push_back({*next, 0});
    }
    // Those with a parent are only reached from here when nothing above them is at the top.
    std::stable_partition(open.begin(), open.end(), [](const Row<Entity>& row) {
        return row.object->parent.get() != nullptr;
    });

    std::vector<Row<Entity>> result;
    std::unordered_set<const Entity*> visited;
    while (!open.empty()) {
        const Row<Entity> next = open.back();
        open.pop_back();
        if (!visited.insert(next.object).second) continue;
        result.push_back(next);
        for (Entity* child : children[next.object]) {
            open.push_back({child, next.depth + 1});
        }
    }
    return result;
}

}  // namespace tesserine::tree
