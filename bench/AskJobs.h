#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// The choice of passages for questions over a library of `noteCount` made-up notes, beside the one
/// search that it begins with. The library is made in `folder` and removed afterwards.
std::vector<Row> askJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
