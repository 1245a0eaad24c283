#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {

/// The version of the folder and of its manifest.
inline constexpr int exportFormatVersion = 1;

/// What an export of the library holds besides its notes.
struct ExportOptions {
    bool includeTrash = false;
    bool includeMarkdown = false;              ///< a Markdown file beside each page
    bool includeOriginalImportSource = false;  ///< the source XML of imported notes
    bool includeAttachments = false;
    bool includeTasks = false;
    std::string appVersion{};  ///< written into manifest and README
};

/// How far an export is.
struct ExportProgress {
    std::size_t notesWritten = 0;
    std::size_t totalNotes = 0;
    std::size_t attachmentsWritten = 0;
    std::uint64_t bytesWritten = 0;
    std::string currentNotebook{};
};

/// How a running export is watched and stopped.
struct ExportControl {
    std::stop_token stop{};
    /// Called after each note, on the exporting thread.
    std::function<void(const ExportProgress&)> progress{};
};

/// What an export wrote.
struct ExportSummary {
    std::filesystem::path directory{};
    std::size_t notesWritten = 0;
    std::size_t attachmentsWritten = 0;
    std::uint64_t attachmentBytes = 0;
    std::size_t tasksWritten = 0;
    std::vector<std::string> warnings{};
};

}  // namespace tesserine
