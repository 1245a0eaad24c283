#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <vector>

namespace tesserine::bench {

/// Reading typed sentences into tasks beside the patterns alone: the same regular expressions,
/// compiled once and run in the same order over text that is already UTF-16, with nothing made of
/// what they find.
std::vector<Row> sentenceJobs(std::size_t rounds);

}  // namespace tesserine::bench
