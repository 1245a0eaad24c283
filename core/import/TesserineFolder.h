#pragma once

#include "base/Encoding.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tesserine {

/// The folder of an export that is read back. What it says of itself is not trusted: no path leads
/// out of it, and no link is followed. Any thread.
class TesserineFolder {
public:
    /// Throws `FileError` when there is no such folder.
    explicit TesserineFolder(const std::filesystem::path& folder);

    /// Where it is, as clean text.
    std::string title() const;
    /// The regular file at `relative` ("/" between names); none for a path that leads elsewhere or
    /// to nothing.
    std::optional<std::filesystem::path> file(const std::string& relative) const;
    /// Its bytes; none as for `file`, for a file of more than `limit` bytes, and for one that
    /// cannot be read.
    std::optional<Bytes> read(const std::string& relative, std::uint64_t limit) const;

private:
    std::filesystem::path folder_;  // absolute, without links
};

}  // namespace tesserine
