#pragma once

#include "base/Instant.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// A file of an import, by its place below a folder that the user chose.
struct SourceFile {
    std::uint32_t root = 0;  ///< number of that folder
    std::string relative;  ///< below it, components separated by "/"; the bytes of the file system
};

/// When a file was made and changed.
struct FileTimes {
    Instant created;
    Instant modified;
    std::uint64_t byteCount = 0;
};

/// The files that an import may touch: what was found below the chosen folders, and nothing else.
///
/// Hidden files and folders are left out; links are never followed; pipes, devices and sockets are
/// no files. Files that were chosen one by one bring no others with them: what stands beside them
/// is looked up when it is asked for. Any thread; not synchronised.
class SourceFolder {
public:
    struct Problem {
        std::string name;
        std::string sentence;
    };

    /// Looks at `sources`, folders or files, in their order, folders recursively and by name. Which
    /// files are notes is told by `isNote`; a file chosen by itself always is one. Throws
    /// `FileError` when a source is not there; a folder inside that cannot be read is a problem.
    SourceFolder(
        const std::vector<std::filesystem::path>& sources,
        bool (*isNote)(std::string_view filename),
        const std::stop_token& stop = {});

    const std::vector<SourceFile>& notes() const { return notes_; }
    const std::vector<SourceFile>& others() const { return others_; }
    const std::vector<Problem>& problems() const { return problems_; }
    /// Whether the root was chosen as a folder, rather than files in it one by one.
    bool isWholeFolder(std::uint32_t root) const { return roots_[root].isWhole; }
    /// The chosen folder's own name; empty for the root of the file system.
    std::string rootName(std::uint32_t root) const;
    std::filesystem::path path(const SourceFile& file) const;
    /// `relative` as clean text.
    static std::string name(const SourceFile& file);
    /// The chosen sources, absolute, separated by ", ".
    const std::string& title() const { return title_; }

    /// A regular file beside notes that were chosen one by one: `relative` below `root`, without
    /// hidden components and without a link on the way.
    std::optional<SourceFile> fileBeside(std::uint32_t root, const std::string& relative) const;

    /// Throws `FileError`.
    static FileTimes times(const std::filesystem::path& file);

private:
    struct Root {
        std::filesystem::path path;
        bool isWhole = false;
    };

    std::uint32_t rootAt(const std::filesystem::path& folder, bool isWhole);
    void addFolder(std::uint32_t root, const std::stop_token& stop);
    void addEntries(std::uint32_t root, const std::string& folder, std::vector<std::string>& open);

    bool (*isNote_)(std::string_view filename);
    std::vector<Root> roots_;
    std::vector<SourceFile> notes_;
    std::vector<SourceFile> others_;
    std::vector<Problem> problems_;
    std::string title_;
};

}  // namespace tesserine
