#pragma once

#include "bench/Measure.h"

#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// How many small notes a second the sync service stores for several devices, each in a request of
/// its own over the loopback and on disk when it is answered, beside SQLite storing the same rows
/// in transactions of their own. Works in the empty folder `folder`.
std::vector<Row> serviceJobs(const std::filesystem::path& folder, std::size_t rounds);

}  // namespace tesserine::bench
