#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <vector>

namespace tesserine::bench {

/// Making bodies canonical beside one plain pass over their bytes: bodies as they are stored, and
/// the same as another program would paste them. `noteCount` is how many different bodies are used.
std::vector<Row> bodyJobs(std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
