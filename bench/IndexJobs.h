#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// The search index beside plain SQLite on the same rows: filling it from a library, bringing one
/// changed note up to date, and finding amounts and dates in text. Makes libraries in `folder`,
/// which is emptied before and removed afterwards.
std::vector<Row> indexJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
