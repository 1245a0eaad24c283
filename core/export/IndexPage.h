#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tesserine {

/// One note as the index lists it.
struct IndexEntry {
    std::string title;
    std::string address;
    std::string date;
    std::vector<std::string> tags;
};

/// The notes of one notebook. Keeps their lines as HTML, which is the least to keep of them.
class IndexGroup {
public:
    explicit IndexGroup(std::string heading) : heading_(std::move(heading)) {}

    void add(const IndexEntry& entry);
    /// The heading and its list; empty when there are no notes.
    std::string html() const;

private:
    std::string heading_;
    std::string lines_;
};

/// The page that lists every note with a link to its own.
std::string indexPage(const std::vector<IndexGroup>& groups);

}  // namespace tesserine
