#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// Kinds of searches on an index of `noteCount` made-up notes, each beside the ranking statement
/// that SQLite runs alone. The index is made in `folder` and removed afterwards.
std::vector<Row> queryJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
