#pragma once

#include "base/Digest.h"
#include "core/store/ContextState.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tesserine {

class CDNote;

/// One save of one context, from the conflicts to the commit. Used once.
///
/// Everything in memory that depends on the commit (keys, versions, what counts as changed) is
/// touched only after it, so that a failed save leaves the context as it was.
class StoreContext::SaveOperation {
public:
    explicit SaveOperation(State& state);

    /// Writes and commits. Throws `StoreError` (saveFailed).
    void run();
    /// What was committed; empty when nothing was left to write.
    const std::vector<ObjectChange>& changes() const { return changes_; }

private:
    /// A large value as its row will hold it.
    struct Encoded {
        const StoreObject* object;
        std::size_t attribute;
        Bytes column;
        std::optional<SHA256Digest> digest;
    };

    void prepareExternalValues();
    Encoded encode(const StoreObject& object, std::size_t attribute, const Bytes& value);
    std::optional<std::string> fileHolding(
        const EntityDescription& entity,
        const AttributeDescription& attribute,
        const SHA256Digest& digest);
    const Encoded* encoded(const StoreObject& object, std::size_t attribute) const;
    void write(SQLiteDatabase& database);
    void settleConflicts(SQLiteDatabase& database);
    void collectConflict(
        SQLiteDatabase& database, StoreObject& object, std::vector<SaveConflict>& conflicts);
    std::vector<Value> storedValues(SQLiteDatabase& database, StoreObject& object);
    void takeStoredValues(SQLiteDatabase& database, SaveConflict& conflict);
    void readRowAgain(SQLiteDatabase& database, StoreObject& object);
    void meetDeletion(StoreObject& object);
    void deleteWhatRefers(SQLiteDatabase& database);
    void assignKeys(SQLiteDatabase& database);
    void writeObject(SQLiteDatabase& database, StoreObject& object);
    void insertRow(SQLiteDatabase& database, StoreObject& object);
    void updateRow(SQLiteDatabase& database, StoreObject& object);
    void deleteRow(SQLiteDatabase& database, StoreObject& object);
    void rememberExternalFiles(SQLiteDatabase& database, StoreObject& object, bool all);
    void bindAttribute(Statement& statement, int place, StoreObject& object, std::size_t attribute);
    void bindReference(
        SQLiteDatabase& database,
        Statement& statement,
        int place,
        StoreObject& object,
        std::size_t reference);
    void removeFiles(const std::vector<std::string>& names);
    void writeDigest(SQLiteDatabase& database, StoreObject& object, std::size_t attribute);
    void writeLinks(SQLiteDatabase& database);
    void record(SQLiteDatabase& database);
    std::int64_t keyOf(const StoreObject& object) const;
    void dragAlong(
        SQLiteDatabase& database, const RelationshipDescription& relationship, std::int64_t key);
    static std::optional<std::int64_t> storedVersion(
        SQLiteDatabase& database, const StoreObject& object);
    void succeed();
    void undo();

    State& state_;
    std::vector<Encoded> encoded_;
    std::vector<std::string> newFiles_;  ///< written for this save; removed again when it fails
    std::vector<std::string> oldFiles_;  ///< no longer named by any row; removed after the commit
    std::unordered_map<const StoreObject*, std::int64_t> keys_;      ///< of new rows
    std::unordered_map<const StoreObject*, std::int64_t> versions_;  ///< as committed
    std::vector<StoreObject*> reinserted_;  ///< deleted by somebody else, but typed into here
    std::vector<StoreObject*> vanished_;    ///< deleted by somebody else, and left so
    std::vector<StoreObject*> kept_;        ///< revisions that the merge policy made
    /// Deleted with their owner, to which somebody else attached them; and whether each was
    /// pending.
    std::vector<std::pair<StoreObject*, bool>> dragged_;
    /// Notes whose `hasConflict` the merge policy may set, with its value before.
    std::vector<std::pair<CDNote*, std::optional<bool>>> marked_;
    std::vector<ObjectChange> changes_;
    bool isUncertain_ = false;  ///< the disk failed: the commit may or may not be in the file
};

}  // namespace tesserine
