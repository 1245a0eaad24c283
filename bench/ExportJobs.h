#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// Exporting a library of `noteCount` made-up notes with their attachments, beside `cp -r` of the
/// folder that the export makes; both until everything is on the disk. `folder` is emptied before
/// and removed afterwards.
std::vector<Row> exportJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
