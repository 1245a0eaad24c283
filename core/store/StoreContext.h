#pragma once

#include "core/store/ListedRow.h"
#include "core/store/Predicate.h"
#include "core/store/StoreChanges.h"
#include "core/store/StoreError.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace tesserine {

class MergePolicy;
class PredicateNode;
class SQLiteDatabase;
class Statement;
class StoreCore;

/// A unit of work on the library: objects, one for each row, with pending changes until `save`.
///
/// Fetches always show the library with this context's unsaved inserts, changes and deletions
/// applied. Confined to one thread (the main context to the main thread); a fetch sees what is
/// committed at its moment. Made by `TesserineStore`, which outlives it. Reading throws
/// `StoreError` (readFailed).
class StoreContext final : public ObjectHost {
public:
    StoreContext(const StoreContext&) = delete;
    StoreContext& operator=(const StoreContext&) = delete;
    ~StoreContext() override;

    /// A new object with the entity's defaults and, where the entity has an `id`, a new one.
    template <class Entity>
    Entity& insert() {
        return static_cast<Entity&>(insertObject(Entity::kind));
    }
    /// The object with this identity, or null.
    template <class Entity>
    Entity* find(const Uuid& id) {
        return static_cast<Entity*>(findObject(Entity::kind, id));
    }
    /// The same, but it must be there: otherwise throws `StoreError::notFound(what)`.
    template <class Entity>
    Entity& get(const Uuid& id, const std::string& what) {
        if (auto* found = find<Entity>(id)) return *found;
        throw StoreError::notFound(what);
    }
    template <class Entity>
    std::vector<Entity*> fetch(const FetchRequest& request = {}) {
        std::vector<Entity*> result;
        const auto objects = fetchObjects(Entity::kind, request);
        result.reserve(objects.size());
        for (StoreObject* object : objects) {
            result.push_back(static_cast<Entity*>(object));
        }
        return result;
    }
    /// The first object of the request, or null.
    template <class Entity>
    Entity* fetchFirst(FetchRequest request) {
        request.limit = 1;
        const auto objects = fetchObjects(Entity::kind, request);
        return objects.empty() ? nullptr : static_cast<Entity*>(objects.front());
    }
    /// Hands every object of the request to `visit`, in order, as a row and without making objects:
    /// for long lists of which a few values are wanted. `visit` changes nothing in this context.
    template <class Entity>
    void visitRows(
        const FetchRequest& request, const std::function<void(const ListedRow&)>& visit) {
        visitObjectRows(Entity::kind, request, visit);
    }
    template <class Entity>
    std::size_t count(const Predicate& predicate = {}) {
        return countObjects(Entity::kind, predicate);
    }
    /// Deletes the object and applies the delete rules of its relationships.
    void remove(StoreObject& object);

    StoreObject& insertObject(EntityKind kind);
    StoreObject* findObject(EntityKind kind, const Uuid& id);
    std::vector<StoreObject*> fetchObjects(EntityKind kind, const FetchRequest& request);
    void visitObjectRows(
        EntityKind kind,
        const FetchRequest& request,
        const std::function<void(const ListedRow&)>& visit);
    std::size_t countObjects(EntityKind kind, const Predicate& predicate);

    bool hasChanges() const;
    /// Writes every pending change in one transaction, with one entry in the history, and tells the
    /// other contexts of the store. Conflicts with what others wrote meanwhile go to the merge
    /// policy. When it throws `StoreError` (saveFailed) nothing was written and everything is still
    /// pending.
    void save();
    /// Drops every pending change.
    void rollback();
    /// Drops every pending change and forgets every object: all references become invalid.
    void reset();
    /// Lets bodies, sources and file data of unchanged objects go; they are read again when
    /// touched.
    void releaseLargeValues();

    /// Takes over what other contexts or processes committed: clean attributes are refreshed,
    /// deleted objects leave. An object whose `html` was changed here keeps the row version it was
    /// read at, so that its save meets the conflict and loses nothing.
    void merge(const std::vector<ObjectChange>& changes);

    /// Called after a save of this context and after a merge into it, with what changed.
    using Observer = std::function<void(const std::vector<ObjectChange>&)>;
    void setObserver(Observer observer) { observer_ = std::move(observer); }

    /// Time of the store's clock, as stamped on objects.
    Instant now() const;
    /// For listings and checks that read rows without making objects.
    SQLiteDatabase& reader();

    // ObjectHost: what objects ask of their context.
    void loadAttribute(StoreObject& object, std::size_t attribute) override;
    void objectChanges(StoreObject& object) override;
    StoreObject* resolve(EntityKind kind, LinkSlot& slot) override;
    std::vector<StoreObject*> related(StoreObject& object, std::size_t relationship) override;
    bool isRelated(
        StoreObject& object, std::size_t relationship, const StoreObject& other) override;
    std::size_t relatedCount(StoreObject& object, std::size_t relationship) override;
    void relate(StoreObject& object, std::size_t relationship, StoreObject& other) override;
    void unrelate(StoreObject& object, std::size_t relationship, StoreObject& other) override;

private:
    friend class TesserineStore;
    struct State;
    class SaveOperation;
    explicit StoreContext(std::shared_ptr<StoreCore> core, std::unique_ptr<MergePolicy> policy);

    Observer observer_;
    std::unique_ptr<State> state_;
};

}  // namespace tesserine
