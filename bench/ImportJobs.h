#pragma once

#include "bench/Measure.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace tesserine::bench {

/// Importing an Evernote export file: reading it beside a bare pass of the XML parser, and the
/// whole import beside putting the same notes and files into a library with nothing to read.
/// `folder` is emptied before and removed afterwards.
std::vector<Row> importJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds);

}  // namespace tesserine::bench
