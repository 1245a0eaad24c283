#pragma once

#include "core/import/ImportTypes.h"

#include <filesystem>
#include <utility>
#include <vector>

namespace tesserine {

class StoreContext;

/// Imports Evernote's export files; see `docs/formats/enex-import.md`.
///
/// Each file becomes a notebook of its name, its notes with their text, files, tasks, tags and
/// dates become notes, and links between them lead to each other. A note that cannot be read fails
/// alone and is listed in the report, and so is the place where a file breaks off. One note is in
/// memory at a time. At the end the library is read again and compared with the source. A run that
/// was stopped or killed can be started again: what is in is known by its fingerprint. Any thread,
/// with a context of its own, whose objects it forgets now and then. `environment` outlives it.
class ENEXImporter {
public:
    explicit ENEXImporter(ImportEnvironment environment) : environment_(std::move(environment)) {}

    /// What `run` would do; reads the files and the library and writes nothing. Throws `FileError`
    /// when a file is not there, and `StoreError`.
    ImportPreview preview(
        StoreContext& context,
        const std::vector<std::filesystem::path>& files,
        const ImportOptions& options,
        const ImportControl& control = {}) const;

    /// Imports the files. The report is in the library, also when the run was stopped; what is
    /// saved then stays. Throws as `preview`.
    ImportReport run(
        StoreContext& context,
        const std::vector<std::filesystem::path>& files,
        const ImportOptions& options,
        const ImportControl& control = {}) const;

private:
    const ImportEnvironment environment_;
};

}  // namespace tesserine
