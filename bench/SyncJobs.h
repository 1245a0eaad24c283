#pragma once

#include "bench/Measure.h"

#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// Writing and reading 100,000 records of the wire beside bare Boost.JSON; the first
/// synchronisation of `noteCount` notes with a service on the loopback, from one library and into
/// another, beside copying a file of the same records to disk. Works in the empty folder `folder`.
std::vector<Row> syncJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
