#pragma once

#include "base/Clock.h"
#include "base/Uuid.h"
#include "core/model/TaskEntities.h"
#include "sync/WireRecords.h"

#include <optional>
#include <vector>

namespace tesserine {

class CDSyncMeta;
class StoreContext;

/// A task that two devices changed at once, and the version that did not win.
struct TaskConflict {
    Uuid task;
    TaskVersion present;
    TaskVersion other;
};

/// The versions of tasks that lost against another device's, until somebody has chosen.
///
/// They are kept with the library on the device that made the choice and never travel. A task may
/// have lost several; one is settled after another, the oldest first. Works in the context it is
/// given and never saves. Not synchronised: call it on the thread that owns the context.
class TaskConflicts {
public:
    explicit TaskConflicts(StoreContext& context) : context_(context) {}

    /// One for each task that waits for a choice, by title. Tasks that were deleted are left out.
    std::vector<TaskConflict> all();
    /// The next choice about one task; none when nothing waits.
    std::optional<TaskConflict> of(const Uuid& task);

    /// The task stays as it is; its other version is forgotten.
    void useThisVersion(const Uuid& task);
    /// The task becomes what the other version says, as of now; its place in projects, trees and
    /// labels stays. Does nothing when no choice waits or the task is gone.
    void useOtherVersion(const Uuid& task, const Clock& clock);
    /// The task stays as it is; its other version becomes a task of its own beside it, with the
    /// same labels. Does nothing when no choice waits or the task is gone.
    void keepBoth(const Uuid& task, const Clock& clock);

    /// Keeps `version`, a payload, for a choice, unless it shows nothing that `task` does not.
    void keep(CDTask& task, const JSONObject& version);

private:
    CDSyncMeta* entry(const Uuid& task);

    StoreContext& context_;
};

}  // namespace tesserine
