#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// A locked passage in a canonical body.
struct LockedPassage {
    std::string_view blob;   ///< as it stands in the body
    std::size_t start = 0;   ///< where its block stands in the body, in bytes
    std::size_t length = 0;  ///< of its block
};

/// The block by which a body holds a locked passage.
std::string lockedBlock(std::string_view blob);

/// The locked passages of a canonical body in order, in tables and lists, too. Their blobs are
/// views into `body`. Linear time.
std::vector<LockedPassage> lockedPassages(std::string_view body);

/// The body with plain paragraphs in the place of a locked passage, one for each line of `text`.
std::string withoutLock(std::string_view body, const LockedPassage& passage, std::string_view text);

}  // namespace tesserine
