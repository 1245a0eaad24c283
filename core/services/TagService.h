#pragma once

#include "base/Clock.h"
#include "core/model/NoteEntities.h"
#include "core/services/ServiceErrors.h"
#include "core/services/Tree.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreContext;

/// Keeps the tags and their tree. Names are unique in the whole library, ignoring case.
///
/// Works in the context it is handed and never saves. Changes stamp the tag's `updatedAt`, not that
/// of notes and tasks. Not synchronised: call it on the thread that owns the context.
class TagService {
public:
    explicit TagService(const Clock& clock) : clock_(clock) {}

    /// The tag of this name, made when there is none; null, and nothing made, for an empty name.
    CDTag* findOrCreate(StoreContext& context, std::string_view name) const;
    /// The tag of this name, if any.
    CDTag* find(StoreContext& context, std::string_view name) const;
    /// All tags by name.
    std::vector<CDTag*> all(StoreContext& context, const text::Collator& collator) const;
    /// All tags as a tree, by name within each level.
    std::vector<tree::Row<CDTag>> tree(StoreContext& context, const text::Collator& collator) const;

    /// Renames the tag, or merges it into the tag that has the name already: notes, tasks and
    /// children go over and the renamed tag is deleted. Returns the tag that is left. An empty name
    /// changes nothing.
    CDTag& rename(StoreContext& context, CDTag& tag, std::string_view name) const;
    /// Puts the tag below `parent` (none: at the top); refused, and false, when that is the tag
    /// itself or stands below it.
    bool move(CDTag& tag, CDTag* parent) const;
    /// None takes the colour away. Throws `TagError::badColor`.
    void setColor(CDTag& tag, const std::optional<std::string>& color) const;
    /// Deletes the tags that no note and no task carries and that have no children; tells how many.
    /// Notes and tasks whose deletion is pending count as gone. A parent that this pass leaves
    /// without children goes with the next.
    std::size_t pruneUnused(StoreContext& context) const;
    /// Deletes the tag; notes and tasks only lose the link.
    void remove(StoreContext& context, CDTag& tag) const;

private:
    void merge(StoreContext& context, CDTag& tag, CDTag& into) const;

    const Clock& clock_;
};

}  // namespace tesserine
