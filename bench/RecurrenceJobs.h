#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <vector>

namespace tesserine::bench {

/// Next occurrences of all kinds of rules, with and without clock changes, beside a full calendar
/// that is set to a date, moved by the same unit and read.
std::vector<Row> recurrenceJobs(std::size_t rounds);

}  // namespace tesserine::bench
