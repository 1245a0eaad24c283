#pragma once

#include "base/Log.h"
#include "core/model/StoreObject.h"

#include <vector>

namespace tesserine {

class StoreContext;

/// One object that was changed here and, since it was read, by somebody else.
struct SaveConflict {
    StoreObject* object = nullptr;
    /// What is in the file, by attribute; external values are not read and null.
    std::vector<Value> stored;

    /// The stored value of the attribute called `name`.
    const Value& storedValue(std::string_view name) const;
};

/// What a save does about objects that were changed on both sides. Whatever a policy does first,
/// the base behaviour follows: what was changed in memory wins, attribute by attribute, and the
/// rest is taken from the file.
class MergePolicy {
public:
    MergePolicy() = default;
    MergePolicy(const MergePolicy&) = delete;
    MergePolicy& operator=(const MergePolicy&) = delete;
    virtual ~MergePolicy() = default;

    /// Called inside the save, before the base behaviour. May insert and change objects of
    /// `context`.
    virtual void resolve(std::vector<SaveConflict>& conflicts, StoreContext& context) = 0;
};

/// Keeps the losing body of a note as a revision with the reason "conflict".
class ConflictPreservingMergePolicy final : public MergePolicy {
public:
    explicit ConflictPreservingMergePolicy(Log log) : log_(std::move(log)) {}

    /// For each note whose body was changed here and whose stored body is another, not empty one: a
    /// revision of the stored version, and `hasConflict`. Logs the names of what was replaced.
    void resolve(std::vector<SaveConflict>& conflicts, StoreContext& context) override;

private:
    Log log_;
};

}  // namespace tesserine
