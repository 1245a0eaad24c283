#pragma once

#include "base/Uuid.h"
#include "core/import/SourceFolder.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// Finds the files of attachments beside a store of Apple Notes. Where they lie differs between
/// versions; the identifier is always part of the path.
class AppleNoteFiles {
public:
    /// Looks at the files below `folder`, without following links. Throws `FileError`.
    explicit AppleNoteFiles(const std::filesystem::path& folder);

    /// The file of this name that belongs to a medium; the only one when none has the name.
    std::optional<std::filesystem::path> medium(
        const std::string& identifier, const std::string& filename) const;
    /// What stands for a drawing, scan or the like: a document before a picture, a large picture
    /// before a small one.
    std::optional<std::filesystem::path> fallback(const std::string& identifier) const;

private:
    struct File {
        std::filesystem::path path;
        std::string name;
        std::uint64_t byteCount = 0;
    };
    using FilesByIdentifier = std::map<Uuid, std::vector<File>>;

    void add(const SourceFile& file);
    static const std::vector<File>* find(
        const FilesByIdentifier& files, const std::string& identifier);

    SourceFolder folder_;
    FilesByIdentifier media_;
    FilesByIdentifier fallbacks_;
};

}  // namespace tesserine
