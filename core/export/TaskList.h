#pragma once

#include "base/Text.h"
#include "core/model/TaskEntities.h"

#include <string>
#include <vector>

namespace tesserine {

class Calendar;

/// All tasks as a Markdown list under "# Tasks", grouped by project: the Inbox first, tasks in no
/// project last; open tasks before those that are done, subtasks below theirs.
std::string taskListOf(
    const std::vector<CDTask*>& tasks, const Calendar& calendar, const text::Collator& collator);

}  // namespace tesserine
