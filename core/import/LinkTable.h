#pragma once

#include "core/import/SourceFolder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// An address in a Markdown file that is no web address, taken apart.
struct LocalAddress {
    enum class Kind {
        file,      ///< a file, relative to the folder of the one that names it
        refused,   ///< leads out of the chosen folder, or names a place on this machine
        elsewhere  ///< has a scheme of its own, or is only a place in the same file
    };
    Kind kind = Kind::elsewhere;
    std::string path{};  ///< below the root, without "." and ".."; of a file only
};
/// `from` is the file that holds the address, with its path below the root. Percent signs are
/// decoded once; what follows "?" or "#" is dropped.
LocalAddress localAddress(std::string_view address, std::string_view from);

/// Finds files of an import by the ways in which notes name each other: by path, with or without
/// extension, or by name alone; without regard to case and to Unicode form.
///
/// Holds a few numbers for each file, no texts. `files` outlives it and does not change.
class LinkTable {
public:
    enum class Extension { optional, required };
    LinkTable(const std::vector<SourceFile>& files, Extension extension);

    /// The file at `path` below `root`.
    std::optional<std::size_t> atPath(std::uint32_t root, std::string_view path) const;
    /// The file that `name`, perhaps with folders before it, means when `from` says it: beside
    /// `from` before anywhere else, then the one with the shortest path.
    std::optional<std::size_t> named(const SourceFile& from, std::string_view name) const;

private:
    struct Entry {
        std::uint64_t hash = 0;
        std::uint32_t file = 0;
    };

    std::string key(std::string_view path) const;
    std::vector<std::size_t> candidates(
        const std::vector<Entry>& entries, std::string_view key) const;

    const std::vector<SourceFile>& files_;
    Extension extension_;
    std::vector<Entry> byPath_;
    std::vector<Entry> byName_;
};

/// Whether a file of this name is Markdown or text: its extension is md, markdown or txt.
bool isMarkdownFile(std::string_view filename);
/// `filename` without that extension.
std::string_view withoutMarkdownExtension(std::string_view filename);

}  // namespace tesserine
