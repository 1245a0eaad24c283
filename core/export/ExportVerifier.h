#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {

/// What was found in an export folder.
struct ExportVerification {
    std::size_t notes = 0;
    std::size_t files = 0;    ///< that were read
    std::uint64_t bytes = 0;  ///< in them
    /// One sentence for each fault; empty: everything is as the manifest says.
    std::vector<std::string> problems{};
    bool wasStopped = false;
};

/// Reads the export in `folder` again and compares it with its manifest: every file that it names
/// is there, attachments have their size and digest, the counts are right, and the addresses on
/// the pages lead somewhere. Nothing outside the folder is touched, whatever the manifest says.
/// Throws `FileError` when there is no manifest. Any thread.
ExportVerification verifyExport(
    const std::filesystem::path& folder, const std::stop_token& stop = {});

}  // namespace tesserine
