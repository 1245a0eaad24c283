#pragma once

#include "base/Clock.h"
#include "core/model/TaskEntities.h"
#include "core/tasks/TaskErrors.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace tesserine {

class StoreContext;

/// Keeps the projects: their names are unique in the library, ignoring case, and one of them is the
/// Inbox, which can neither be renamed nor deleted.
///
/// Works in the context it is handed and never saves. Not synchronised: call it on the thread that
/// owns the context.
class ProjectService {
public:
    static constexpr std::string_view inboxName = "Inbox";
    /// Longer names are cut.
    static constexpr std::size_t maximumNameCharacters = 200;

    explicit ProjectService(const Clock& clock) : clock_(clock) {}

    /// The Inbox, made when there is none.
    CDProject& inbox(StoreContext& context) const;
    /// The project of this name, trimmed; for "Inbox" the Inbox, made when there is none.
    CDProject* find(StoreContext& context, std::string_view name) const;
    /// The same, made when there is none; the Inbox for an empty name.
    CDProject& findOrCreate(StoreContext& context, std::string_view name) const;
    /// All projects in their order: by `sortIndex`, then by age.
    std::vector<CDProject*> all(StoreContext& context) const;

    /// Throws `ProjectError` (emptyName, duplicate).
    CDProject& create(StoreContext& context, std::string_view name) const;
    /// Throws `ProjectError` (isInbox, emptyName, duplicate). The same name in other letters is no
    /// duplicate.
    void rename(StoreContext& context, CDProject& project, std::string_view name) const;
    /// Moves the project's tasks to the Inbox, then deletes it. Throws `ProjectError` (isInbox).
    void remove(StoreContext& context, CDProject& project) const;

    /// Leaves one Inbox where there are several, as after two devices made theirs: the oldest, of
    /// equals the one with the smallest `id`, takes the tasks of the others. Tells how many were
    /// taken away.
    std::size_t mergeInboxes(StoreContext& context) const;

private:
    CDProject& insert(StoreContext& context, std::string_view name) const;
    void moveTasks(const CDProject& from, CDProject& to) const;

    const Clock& clock_;
};

}  // namespace tesserine
