#include "core/services/TagService.h"

#include "base/Text.h"
#include "core/services/StoredNames.h"
#include "core/store/StoreContext.h"

namespace tesserine {
namespace {

/// Oldest first, so that of two twins it is always the same one that is found.
const std::vector<SortDescriptor> oldestTagFirst{{"createdAt"}};

}  // namespace

CDTag* TagService::findOrCreate(StoreContext& context, std::string_view name) const {
    const auto stored = storedTagName(name);
    if (!stored) return nullptr;
    if (CDTag* existing = find(context, *stored)) return existing;

    auto& made = context.insert<CDTag>();
    made.name = *stored;
    made.createdAt = clock_.now();
    made.updatedAt = made.createdAt;
    return &made;
}

CDTag* TagService::find(StoreContext& context, std::string_view name) const {
    const auto stored = storedTagName(name);
    if (!stored) return nullptr;
    return context.fetchFirst<CDTag>(
        {.predicate = {"name ==[c] %@", *stored}, .sort = oldestTagFirst});
}

std::vector<CDTag*> TagService::all(StoreContext& context, const text::Collator& collator) const {
    auto tags = context.fetch<CDTag>();
    tree::sortByName(tags, collator);
    return tags;
}

std::vector<tree::Row<CDTag>> TagService::tree(
    StoreContext& context, const text::Collator& collator) const {
    return tree::rows(all(context, collator));
}

CDTag& TagService::rename(StoreContext& context, CDTag& tag, std::string_view name) const {
    const auto stored = storedTagName(name);
    if (!stored) return tag;
    auto* const existing = context.fetchFirst<CDTag>(
        {.predicate = {"name ==[c] %@ AND SELF != %@", *stored, tag}, .sort = oldestTagFirst});
    if (existing != nullptr) {
        merge(context, tag, *existing);
        return *existing;
    }
    tag.name = *stored;
    tag.updatedAt = clock_.now();
    return tag;
}

void TagService::merge(StoreContext& context, CDTag& tag, CDTag& into) const {
    for (CDNote* note : tag.notes.all()) {
        into.notes.add(*note);
    }
    for (CDTask* task : tag.tasks.all()) {
        into.tasks.add(*task);
    }
    for (CDTag* child : tag.children.all()) {
        move(*child, &into);  // one that would make a cycle stays, and so comes to the top
    }
    context.remove(tag);
    into.updatedAt = clock_.now();
}

bool TagService::move(CDTag& tag, CDTag* parent) const {
    if (parent != nullptr && tree::isWithin(*parent, tag)) return false;
    tag.parent = parent;
    tag.updatedAt = clock_.now();
    return true;
}

void TagService::setColor(CDTag& tag, const std::optional<std::string>& color) const {
    const auto stored = color ? storedColor(*color) : std::nullopt;
    if (color && !stored) throw TagError::badColor(*color);
    tag.colorHex = stored;
    tag.updatedAt = clock_.now();
}

std::size_t TagService::pruneUnused(StoreContext& context) const {
    std::vector<CDTag*> unused;
    for (CDTag* tag : context.fetch<CDTag>()) {
        if (tag->notes.empty() && tag->tasks.empty() && tag->children.empty()) {
            unused.push_back(tag);
        }
    }
    for (CDTag* tag : unused) {
        context.remove(*tag);
    }
    return unused.size();
}

void TagService::remove(StoreContext& context, CDTag& tag) const { context.remove(tag); }

}  // namespace tesserine
