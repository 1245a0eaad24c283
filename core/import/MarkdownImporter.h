#pragma once

#include "core/import/ImportTypes.h"
#include "core/import/MarkdownNote.h"

#include <filesystem>
#include <utility>
#include <vector>

namespace tesserine {

class StoreContext;

/// Imports folders of Markdown and text files, or of files in another dialect; see
/// `docs/formats/markdown-import.md`.
///
/// Folders become nested notebooks, links between the files become links between notes, and the
/// pictures and files that they name become attachments. A file that cannot be read fails alone and
/// is listed in the report. A run that was stopped or killed can be started again: what is in is
/// known by its fingerprint. Any thread, with a context of its own, whose objects it forgets now
/// and then. `environment` outlives it.
class MarkdownImporter {
public:
    explicit MarkdownImporter(
        ImportEnvironment environment, const FileDialect& dialect = markdownFiles)
        : environment_(std::move(environment)), dialect_(&dialect) {}

    /// What `run` would do; reads the files and the library and writes nothing. Throws `FileError`
    /// when a source is not there, and `StoreError`.
    ImportPreview preview(
        StoreContext& context,
        const std::vector<std::filesystem::path>& sources,
        const ImportOptions& options,
        const ImportControl& control = {}) const;

    /// Imports folders and files. The report is in the library, also when the run was stopped; what
    /// is saved then stays. Throws as `preview`.
    ImportReport run(
        StoreContext& context,
        const std::vector<std::filesystem::path>& sources,
        const ImportOptions& options,
        const ImportControl& control = {}) const;

private:
    const ImportEnvironment environment_;
    const FileDialect* dialect_;
};

}  // namespace tesserine
