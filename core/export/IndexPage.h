#pragma once

#include <string>
#include <vector>

namespace tesserine {

/// One note as the index lists it.
struct IndexEntry {
    std::string title;
    std::string address;
    std::string date;
    std::vector<std::string> tags;
};

/// The notes of one notebook.
struct IndexGroup {
    std::string heading;
    std::vector<IndexEntry> entries;
};

/// The page that lists every note with a link to its own.
std::string indexPage(const std::vector<IndexGroup>& groups);

}  // namespace tesserine
