#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// The first page of each view of `taskCount` tasks beside plain SQLite on the same file. `folder`
/// is emptied before and removed afterwards.
std::vector<Row> taskJobs(
    const std::filesystem::path& folder, std::size_t taskCount, std::size_t rounds);

}  // namespace tesserine::bench
