#pragma once

#include "base/Encoding.h"
#include "base/Instant.h"
#include "core/export/FileWriter.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tesserine {

class Calendar;

/// The folder that an export is written to. Names inside are made of titles, which anybody may have
/// written: each is one safe path component, and no two are the same for a file system that
/// ignores case. Paths are relative to the folder, with "/".
class ExportFolder {
public:
    /// Makes a new folder "Tesserine Export 2026-03-14 09.15" in `parent`, with " 2", " 3", …
    /// behind when there is one. Throws `FileError`.
    ExportFolder(const std::filesystem::path& parent, Instant now, const Calendar& calendar);

    const std::filesystem::path& path() const noexcept { return path_; }
    std::uint64_t bytesWritten() const { return writer_.bytesWritten(); }

    /// A path in `folder` for something called `name`, with any of `extensions` behind it not used
    /// before; for a folder without one. Remembers it.
    std::string newPath(
        const std::string& folder,
        std::string_view name,
        std::initializer_list<std::string_view> extensions = {""});
    /// The same for a file whose name has its extension already.
    std::string newFilePath(const std::string& folder, std::string_view filename);

    /// Writes a new file, by and by; its folders are made. Throws `FileError`, also for a file
    /// that was handed over before.
    void write(const std::string& path, std::string_view text);
    void write(const std::string& path, Bytes bytes);
    /// The same for a text that `make` gives out of the `size` bytes it holds, on another thread.
    void write(const std::string& path, std::size_t size, std::function<std::string()> make);
    /// Waits until what was handed over is made and written. Throws `FileError`.
    void wait() { writer_.finish(); }
    /// Writes the digests of all files so far as `checksumsName`, and waits until everything is on
    /// the disk. Throws `FileError`.
    void finish();

    /// One line for each file, as `sha256sum --check` reads them.
    static constexpr const char* checksumsName = "checksums.sha256";

private:
    /// Its place, in a folder that is there then.
    std::filesystem::path placeOf(const std::string& path);

    std::filesystem::path path_;
    // Digests of folded paths, the least to keep of a name; two names of one digest only mean that
    // the later one gets a number it would not need.
    std::unordered_set<std::size_t> taken_;
    std::unordered_map<std::size_t, std::size_t> twins_;  // of a name without extension, so far
    std::set<std::string> madeFolders_;
    FileWriter writer_;
};

/// The address of `path` as seen from the file `from`, both relative to the export's folder.
std::string addressFrom(std::string_view from, std::string_view path);

}  // namespace tesserine
