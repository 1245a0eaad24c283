#pragma once

#include "base/Log.h"
#include "search/DocumentReader.h"
#include "search/SearchIndex.h"

#include <cstddef>
#include <functional>
#include <stop_token>

namespace tesserine {

/// What a long piece of work reports to and is stopped by, between two batches.
struct SearchWork {
    std::stop_token stop{};
    /// Documents done and all there are; called on a queue of the coordinator.
    std::function<void(std::size_t done, std::size_t total)> progress{};
};

/// Writes every document of the library to an emptied index, in transactions of at most 5,000
/// documents or about 8 MB; the next documents are read while the last ones are written. Returns
/// false when it was stopped: what was not written yet is missing then.
bool writeEverything(
    SearchIndex& index, DocumentReader& reader, const Log& log, const SearchWork& work);

}  // namespace tesserine
