#include "core/store/ContextState.h"

#include <algorithm>

namespace tesserine {

StoreContext::State::LinkSide StoreContext::State::sideOf(
    const StoreObject& object, std::size_t relationship) {
    const RelationshipDescription& described = object.entity().relationships[relationship];
    if (described.ownsLinks) return {{object.entity().kind, relationship}, true};
    return {{described.destination, described.inverse}, false};
}

const PendingLinks& StoreContext::State::pendingLinks(const LinkID& id) const {
    static const PendingLinks none;
    const auto found = links.find(id);
    return found == links.end() ? none : found->second;
}

/// Objects of a many-to-many relationship: the rows of the link table with the pending changes
/// applied.
std::vector<StoreObject*> StoreContext::State::linked(
    StoreObject& object, std::size_t relationship) {
    const RelationshipDescription& described = object.entity().relationships[relationship];
    std::vector<StoreObject*> result;
    const LinkSide side = sideOf(object, relationship);
    const PendingLinks& changes = pendingLinks(side.id);
    if (!object.isInserted()) {
        const RowMapper& mapper = core->mapper(described.destination);
        Statement& row = reader().cached(
            "SELECT " + mapper.headerColumns() + " FROM " + mapper.entity().table
            + " WHERE Z_PK IN (SELECT " + described.linkDestination + " FROM " + described.linkTable
            + " WHERE " + described.linkSource + " = ?) ORDER BY Z_PK");
        row.bindInteger(1, object.key());
        while (row.step()) {
            StoreObject& other = objectFor(described.destination, row);
            if (other.isDeleted() || changes.removed.contains(side.pair(object, other))) continue;
            result.push_back(&other);
        }
        row.reset();
    }
    for (const auto& [owner, other] : changes.added) {
        if ((side.isOwner ? owner : other) != &object) continue;
        StoreObject* far = side.isOwner ? other : owner;
        if (!far->isDeleted() && !std::ranges::count(result, far)) result.push_back(far);
    }
    return result;
}

/// Objects whose to-one relationship points here.
std::vector<StoreObject*> StoreContext::State::referring(
    StoreObject& object, std::size_t relationship) {
    const RelationshipDescription& described = object.entity().relationships[relationship];
    const EntityKind kind = described.destination;
    std::vector<StoreObject*> result;
    if (!object.isInserted()) {
        const RowMapper& mapper = core->mapper(kind);
        const std::string& column = mapper.entity().relationships[described.inverse].column;
        Statement& row = reader().cached(
            "SELECT " + mapper.headerColumns() + " FROM " + mapper.entity().table + " WHERE "
            + column + " = ? ORDER BY Z_PK");
        row.bindInteger(1, object.key());
        while (row.step()) {
            StoreObject& other = objectFor(kind, row);
            if (!isDirty(other)) result.push_back(&other);
        }
        row.reset();
    }
    for (StoreObject* other : pending) {
        if (other->entity().kind != kind || other->isDeleted()) continue;
        if (other->target(described.inverse) == &object) result.push_back(other);
    }
    return result;
}

std::vector<StoreObject*> StoreContext::related(StoreObject& object, std::size_t relationship) {
    if (object.isDeleted()) return {};
    const auto guard = state_->core->reading();
    return readingLibrary([&] {
        return object.entity().relationships[relationship].isManyToMany
                   ? state_->linked(object, relationship)
                   : state_->referring(object, relationship);
    });
}

bool StoreContext::State::isStoredLink(
    StoreObject& object, std::size_t relationship, const StoreObject& other) {
    if (object.isInserted() || other.isInserted()) return false;
    const RelationshipDescription& described = object.entity().relationships[relationship];
    Statement& row = reader().cached(
        "SELECT 1 FROM " + described.linkTable + " WHERE " + described.linkSource + " = ? AND "
        + described.linkDestination + " = ?");
    row.bindInteger(1, object.key());
    row.bindInteger(2, other.key());
    const bool isThere = row.step();
    row.reset();
    return isThere;
}

bool StoreContext::isRelated(
    StoreObject& object, std::size_t relationship, const StoreObject& other) {
    if (object.isDeleted() || other.isDeleted()) return false;
    const RelationshipDescription& described = object.entity().relationships[relationship];
    auto& far = const_cast<StoreObject&>(other);  // only asked, never changed
    if (!described.isManyToMany) return far.target(described.inverse) == &object;
    const auto guard = state_->core->reading();
    const State::LinkSide side = State::sideOf(object, relationship);
    const PendingLinks& changes = state_->pendingLinks(side.id);
    const auto pair = side.pair(object, far);
    if (changes.added.contains(pair)) return true;
    if (changes.removed.contains(pair)) return false;
    return readingLibrary([&] { return state_->isStoredLink(object, relationship, other); });
}

std::size_t StoreContext::relatedCount(StoreObject& object, std::size_t relationship) {
    if (object.isDeleted()) return 0;
    const RelationshipDescription& described = object.entity().relationships[relationship];
    const State::LinkSide side = State::sideOf(object, relationship);
    const bool hasPending = described.isManyToMany ? state_->links.contains(side.id) : false;
    if (hasPending || state_->hasDirty(described.destination) || object.isInserted()) {
        return related(object, relationship).size();
    }
    const auto guard = state_->core->reading();
    return readingLibrary([&] {
        const EntityDescription& far = Schema::library()[described.destination];
        const std::string source =
            described.isManyToMany
                ? described.linkTable + " WHERE " + described.linkSource
                : far.table + " WHERE " + far.relationships[described.inverse].column;
        Statement& row = state_->reader().cached("SELECT count(*) FROM " + source + " = ?");
        row.bindInteger(1, object.key());
        row.step();
        const auto count = static_cast<std::size_t>(row.integer(0));
        row.reset();
        return count;
    });
}

void StoreContext::relate(StoreObject& object, std::size_t relationship, StoreObject& other) {
    const RelationshipDescription& described = object.entity().relationships[relationship];
    if (!described.isManyToMany) {
        other.setTarget(described.inverse, &object);
        return;
    }
    if (isRelated(object, relationship, other)) return;
    const State::LinkSide side = State::sideOf(object, relationship);
    const auto pair = side.pair(object, other);
    PendingLinks& changes = state_->links[side.id];
    if (changes.removed.erase(pair) == 0) changes.added.insert(pair);
    pair.first->willChangeLink(side.id.second);
}

void StoreContext::unrelate(StoreObject& object, std::size_t relationship, StoreObject& other) {
    const RelationshipDescription& described = object.entity().relationships[relationship];
    if (!described.isManyToMany) {
        if (other.target(described.inverse) == &object) other.setTarget(described.inverse, nullptr);
        return;
    }
    if (!isRelated(object, relationship, other)) return;
    const State::LinkSide side = State::sideOf(object, relationship);
    const auto pair = side.pair(object, other);
    PendingLinks& changes = state_->links[side.id];
    if (changes.added.erase(pair) == 0) changes.removed.insert(pair);
    pair.first->willChangeLink(side.id.second);
}

}  // namespace tesserine
