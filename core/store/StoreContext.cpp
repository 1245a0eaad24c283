#include "core/store/StoreContext.h"

#include "core/store/ContextState.h"

#include <algorithm>
#include <cassert>

namespace tesserine {
namespace {

/// Of an object whose row is to be read again before anything is believed of it.
constexpr std::int64_t unknownVersion = -1;

}  // namespace

StoreContext::StoreContext(std::shared_ptr<StoreCore> core, std::unique_ptr<MergePolicy> policy)
    : state_(std::make_unique<State>(*this, std::move(core), std::move(policy))) {}

StoreContext::~StoreContext() {
    if (state_->connection) state_->core->close(state_->connection);
}

SQLiteDatabase& StoreContext::State::reader() {
    if (!connection) connection = core->openReader();
    return *connection;
}

SQLiteDatabase& StoreContext::reader() { return state_->reader(); }

Instant StoreContext::now() const { return state_->core->clock().now(); }

StoreObject& StoreContext::insertObject(EntityKind kind) {
    const EntityDescription& entity = Schema::library()[kind];
    auto made = entity.make({.host = this, .entity = &entity, .key = state_->nextTemporaryKey--});
    RowMapper::markAllLoaded(*made);
    StoreObject& object = state_->adopt(std::move(made));
    objectChanges(object);
    for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
        const Value& value = entity.attributes[i].defaultValue;
        if (!isNull(value)) object.setValue(i, value);
    }
    if (entity.identity && entity.attributes[*entity.identity].name == "id") {
        object.setValue(*entity.identity, Uuid::random(state_->core->random()));
    }
    return object;
}

StoreObject* StoreContext::findObject(EntityKind kind, const Uuid& id) {
    const EntityDescription& entity = Schema::library()[kind];
    assert(entity.identity && "the entity has an identity");
    const std::string& name = entity.attributes[*entity.identity].name;
    const auto found = fetchObjects(kind, {.predicate = {name + " == %@", id}, .limit = 1});
    return found.empty() ? nullptr : found.front();
}

void StoreContext::remove(StoreObject& object) {
    if (object.isDeleted()) return;
    const auto guard = state_->core->reading();
    // Walks children with a list of its own: a chain of subtasks may be any length.
    std::vector<StoreObject*> waiting{&object};
    while (!waiting.empty()) {
        StoreObject& next = *waiting.back();
        waiting.pop_back();
        if (next.isDeleted()) continue;
        const EntityDescription& entity = next.entity();
        for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
            if (entity.relationships[i].deleteRule != DeleteRule::cascade) continue;
            for (StoreObject* child : related(next, i)) {
                waiting.push_back(child);
            }
        }
        state_->applyDeleteRules(next);
        state_->markDeleted(next);
    }
}

void StoreContext::State::applyDeleteRules(StoreObject& object) {
    const EntityDescription& entity = object.entity();
    for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
        const RelationshipDescription& relationship = entity.relationships[i];
        if (!relationship.isToMany || relationship.deleteRule == DeleteRule::cascade) continue;
        for (StoreObject* other : context.related(object, i)) {
            if (relationship.isManyToMany) {
                context.unrelate(object, i, *other);
            } else {
                other->setTarget(relationship.inverse, nullptr);
            }
        }
    }
}

void StoreContext::State::markDeleted(StoreObject& object) {
    context.objectChanges(object);
    object.isDeleted_ = true;
    if (object.isInserted()) retire(object);  // it never was in the file
}

bool StoreContext::hasChanges() const {
    return !state_->pending.empty() || std::ranges::any_of(state_->links, [](const auto& entry) {
        return !entry.second.added.empty() || !entry.second.removed.empty();
    });
}

void StoreContext::rollback() {
    const auto guard = state_->core->reading();
    const auto pending = std::move(state_->pending);
    state_->pending.clear();
    state_->links.clear();
    // All are clean before the first is read, and unread: an error of the disk leaves no object
    // that looks saved and is not.
    for (StoreObject* object : pending) {
        object->isPending_ = false;
        object->changed_ = 0;
        object->changedLinks_ = 0;
        object->isDeleted_ = object->isInserted();
        if (object->isInserted()) continue;
        object->loaded_ = 0;
        object->version_ = unknownVersion;
    }
    readingLibrary([&] {
        for (StoreObject* object : pending) {
            if (object->isInserted() || !state_->refresh(*object)) state_->retire(*object);
        }
    });
}

void StoreContext::reset() {
    state_->pending.clear();
    state_->links.clear();
    for (auto& rows : state_->rows) {
        rows.clear();
    }
    state_->gone.clear();
}

void StoreContext::releaseLargeValues() {
    for (auto& rows : state_->rows) {
        for (auto& [key, object] : rows) {
            if (key > 0) state_->core->mapper(object->entity().kind).releaseLarge(*object);
        }
    }
}

void StoreContext::merge(const std::vector<ObjectChange>& changes) {
    const auto guard = state_->core->reading();
    readingLibrary([&] {
        for (const ObjectChange& change : changes) {
            StoreObject* object = state_->known(change.entity, change.key);
            if (object == nullptr || object->isDeleted()) continue;
            const bool isDirty = object->isChanged();
            if (change.kind == ChangeKind::deleted) {
                // A changed object meets the deletion in its save, where typed text is kept.
                if (isDirty) continue;
                object->isDeleted_ = true;
                state_->retire(*object);
                continue;
            }
            // The version it was read at stays with a changed body: its save must meet the
            // conflict.
            const std::int64_t version = object->version_;
            bool keepsVersion = false;
            for (std::size_t i = 0; i < object->entity().attributes.size(); ++i) {
                keepsVersion =
                    keepsVersion
                    || (object->isChanged(i) && object->entity().attributes[i].isDigested);
            }
            if (!state_->refresh(*object)) continue;
            if (keepsVersion) object->version_ = version;
        }
    });
    if (observer_) observer_(changes);
}

StoreObject* StoreContext::State::known(EntityKind kind, std::int64_t key) {
    const auto found = rowsOf(kind).find(key);
    return found == rowsOf(kind).end() ? nullptr : found->second.get();
}

StoreObject& StoreContext::State::adopt(std::unique_ptr<StoreObject> object) {
    StoreObject& adopted = *object;
    rowsOf(adopted.entity().kind)[adopted.key()] = std::move(object);
    return adopted;
}

StoreObject& StoreContext::State::objectFor(EntityKind kind, const Statement& row) {
    const std::int64_t key = row.integer(0);
    StoreObject* object = known(kind, key);
    if (object == nullptr) {
        const EntityDescription& entity = Schema::library()[kind];
        object = &adopt(entity.make({.host = &context, .entity = &entity, .key = key}));
    } else if (isDirty(*object) || object->version_ == row.integer(1)) {
        return *object;
    }
    core->mapper(kind).readHeader(row, *object);
    return *object;
}

StoreObject* StoreContext::State::objectWithKey(EntityKind kind, std::int64_t key) {
    if (StoreObject* object = known(kind, key)) return object->isDeleted() ? nullptr : object;
    const RowMapper& mapper = core->mapper(kind);
    Statement& row = reader().cached(
        "SELECT " + mapper.headerColumns() + " FROM " + mapper.entity().table + " WHERE Z_PK = ?");
    row.bindInteger(1, key);
    StoreObject* object = row.step() ? &objectFor(kind, row) : nullptr;
    row.reset();
    return object;
}

bool StoreContext::State::refresh(StoreObject& object) {
    const RowMapper& mapper = core->mapper(object.entity().kind);
    Statement& row = reader().cached(
        "SELECT " + mapper.headerColumns() + " FROM " + mapper.entity().table + " WHERE Z_PK = ?");
    row.bindInteger(1, object.key());
    const bool isThere = row.step();
    if (isThere) mapper.readHeader(row, object);
    row.reset();
    return isThere;
}

/// Takes a deleted object out of the map; whoever still holds it sees `isDeleted`.
void StoreContext::State::retire(StoreObject& object) {
    object.isDeleted_ = true;
    forgetPending(object);
    for (auto& [id, pendingLinks] : links) {
        const auto concerns = [&](const PendingLinks::Pair& pair) {
            return pair.first == &object || pair.second == &object;
        };
        std::erase_if(pendingLinks.added, concerns);
        std::erase_if(pendingLinks.removed, concerns);
    }
    Rows& map = rowsOf(object.entity().kind);
    const auto found = map.find(object.key());
    if (found == map.end()) return;
    gone.push_back(std::move(found->second));
    map.erase(found);
}

void StoreContext::State::forgetPending(StoreObject& object) {
    if (!object.isPending_) return;
    object.isPending_ = false;
    std::erase(pending, &object);
}

void StoreContext::objectChanges(StoreObject& object) {
    if (object.isPending_) return;
    object.isPending_ = true;
    state_->pending.push_back(&object);
}

void StoreContext::loadAttribute(StoreObject& object, std::size_t attribute) {
    if (object.isDeleted() && object.isInserted()) return;
    const auto guard = state_->core->reading();
    readingLibrary([&] {
        // Somebody may replace a value, and remove its file, just after the row was read.
        if (!state_->load(object, attribute)) state_->load(object, attribute);
    });
}

/// Reads one large value, or all details. False when the row names a file that is not there.
bool StoreContext::State::load(StoreObject& object, std::size_t attribute) {
    const RowMapper& mapper = core->mapper(object.entity().kind);
    const AttributeDescription& description = mapper.entity().attributes[attribute];
    const bool isDetail = description.tier == Tier::detail;
    Statement& row =
        reader().cached(isDetail ? mapper.selectDetails() : mapper.selectLarge(attribute));
    row.bindInteger(1, object.key());
    bool isThere = row.step();
    if (isThere && row.integer(0) != object.version_ && !object.isChanged()) {
        row.reset();
        refresh(object);  // so that all its values are of one version
        isThere = row.step();
    }
    bool isComplete = true;
    if (!isThere) {
        object.loaded_ |= std::uint64_t{1} << attribute;  // the row is gone: nothing to read
    } else if (isDetail) {
        mapper.readDetails(row, object);
    } else {
        RowMapper::read(row, 1, object, attribute, core->external());
        isComplete = !description.isExternal || object.slot<Bytes>(description)
                     || !ExternalValues::fileName(row.blob(1));
    }
    row.reset();
    return isComplete;
}

StoreObject* StoreContext::resolve(EntityKind kind, LinkSlot& slot) {
    if (slot.object != nullptr) return slot.object->isDeleted() ? nullptr : slot.object;
    if (slot.key == 0) return nullptr;
    const auto guard = state_->core->reading();
    slot.object = readingLibrary([&] { return state_->objectWithKey(kind, slot.key); });
    return slot.object;
}

}  // namespace tesserine
