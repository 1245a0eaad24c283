#pragma once

#include "base/Calendar.h"
#include "core/import/ENEXNote.h"
#include "core/import/ImportRun.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// The tasks of the note, each group in its order. `calendar` is that of the library: a task that
/// is due on a day is due on that day there.
std::vector<ImportedTask> enexTasks(const ENEXNote& note, const Calendar& calendar);

/// The tasks of one group as a checklist; empty when there are none.
std::string taskChecklist(const ENEXNote& note, std::string_view group);

}  // namespace tesserine
