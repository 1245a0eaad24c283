#pragma once

#include "core/store/MergePolicy.h"
#include "core/store/PredicateTree.h"
#include "core/store/StoreContext.h"
#include "core/store/StoreCore.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tesserine {

/// Pending additions and removals of one many-to-many relationship, seen from its owning side.
struct PendingLinks {
    using Pair = std::pair<StoreObject*, StoreObject*>;  // owner, other
    std::set<Pair> added;
    std::set<Pair> removed;
};

/// The inside of a context: which object stands for which row, and what is pending.
struct StoreContext::State {
    State(
        StoreContext& owner,
        std::shared_ptr<StoreCore> shared,
        std::unique_ptr<MergePolicy> merging)
        : context(owner), core(std::move(shared)), policy(std::move(merging)) {}

    /// Names one many-to-many relationship: the owning entity and its place there.
    using LinkID = std::pair<EntityKind, std::size_t>;
    using Rows = std::unordered_map<std::int64_t, std::unique_ptr<StoreObject>>;

    StoreContext& context;
    std::shared_ptr<StoreCore> core;  // shared with the store and its other contexts
    std::unique_ptr<MergePolicy> policy;
    std::shared_ptr<SQLiteDatabase> connection;  // in memory: shared with every context

    std::array<Rows, entityCount> rows;
    std::vector<StoreObject*>
        pending;  ///< inserted, changed or deleted, in the order of the first change
    std::vector<std::unique_ptr<StoreObject>>
        gone;  ///< deleted for good; their addresses stay good
    std::map<LinkID, PendingLinks> links;
    std::int64_t nextTemporaryKey = -1;
    std::map<std::pair<EntityKind, std::string>, PredicateTree> predicates;

    Rows& rowsOf(EntityKind kind) { return rows[static_cast<std::size_t>(kind)]; }
    SQLiteDatabase& reader();
    const PredicateTree& tree(EntityKind kind, const std::string& format);

    /// The object for the current row of a statement over `headerColumns`, refreshed where it is
    /// clean.
    StoreObject& objectFor(EntityKind kind, const Statement& row);
    /// The object for a key: known, or read; null when there is no such row.
    StoreObject* objectWithKey(EntityKind kind, std::int64_t key);
    StoreObject* known(EntityKind kind, std::int64_t key);
    StoreObject& adopt(std::unique_ptr<StoreObject> object);
    bool load(StoreObject& object, std::size_t attribute);
    /// Reads the row again; what was changed here stays. False when the row is gone.
    bool refresh(StoreObject& object);
    void retire(StoreObject& object);
    void forgetPending(StoreObject& object);

    bool isDirty(const StoreObject& object) const { return object.isPending_; }
    bool hasDirty(EntityKind kind) const;
    /// Whether pending changes of other objects than the examined ones may change a condition's
    /// outcome.
    bool dependsOnPending(const PredicateTree& tree) const;
    /// The statement for the headers of a request. When it is for a part, its limit and offset
    /// follow the condition's values.
    std::string selectWhere(
        EntityKind kind,
        const PredicateSQL& condition,
        const std::vector<SortDescriptor>& sort,
        bool isPart) const;
    std::vector<StoreObject*> rowsWhere(
        EntityKind kind,
        const PredicateSQL& condition,
        const std::vector<SortDescriptor>& sort,
        std::size_t limit,
        std::size_t offset);
    std::string orderClause(EntityKind kind, const std::vector<SortDescriptor>& sort) const;
    static std::string leadingColumn(EntityKind kind, const std::vector<SortDescriptor>& sort);
    void sortObjects(
        EntityKind kind,
        const std::vector<SortDescriptor>& sort,
        std::vector<StoreObject*>& objects) const;

    /// The owning side of a many-to-many relationship and whether `object` stands there.
    struct LinkSide {
        LinkID id;
        bool isOwner = false;
        PendingLinks::Pair pair(StoreObject& object, StoreObject& other) const {
            return isOwner ? std::pair(&object, &other) : std::pair(&other, &object);
        }
    };
    const PendingLinks& pendingLinks(const LinkID& id) const;
    static LinkSide sideOf(const StoreObject& object, std::size_t relationship);
    std::vector<StoreObject*> linked(StoreObject& object, std::size_t relationship);
    std::vector<StoreObject*> referring(StoreObject& object, std::size_t relationship);
    bool isStoredLink(StoreObject& object, std::size_t relationship, const StoreObject& other);

    void applyDeleteRules(StoreObject& object);
    void markDeleted(StoreObject& object);
};

/// Turns errors of the file layer, met while reading, into sentences about the library.
template <class Read>
auto readingLibrary(Read read) -> decltype(read()) {
    try {
        return read();
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::readFailed(StoreCore::explain(error));
    }
}

}  // namespace tesserine
