#pragma once

#include "bench/Measure.h"
#include "bench/NoteGenerator.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::bench {

inline constexpr std::array<std::string_view, 5> storeJobNames = {
    "insert", "list", "body", "change", "open"};

/// What the store is measured on.
struct StoreSample {
    /// For the libraries, on the disk that is to be measured. Emptied before, removed afterwards.
    std::filesystem::path folder;
    std::size_t noteCount = 0;
    std::size_t rounds = 5;
    std::string only{};  ///< one of `storeJobNames`; empty: all of them
};

/// The store beside plain SQLite on the same rows: inserting, listing, reading and changing notes,
/// and opening a library. Takes a second or two for each 1,000 notes.
std::vector<Row> storeJobs(const StoreSample& sample);

}  // namespace tesserine::bench
