#pragma once

#include "core/import/ImportTypes.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace tesserine {

class StoreContext;

/// What an import of an exported library brought.
struct TesserineImport {
    ImportReport report{};
    // Made beside the notes.
    std::size_t notebooks = 0;
    std::size_t tags = 0;
    std::size_t projects = 0;
    std::size_t tasks = 0;
    std::size_t taskTemplates = 0;
    /// Sentences on what is not in the export, or could not be read.
    std::vector<std::string> remarks{};
};

/// Imports a folder that `LibraryExporter` wrote: into an empty library, so that it becomes the one
/// that was exported, under the same identifiers; into any other one, what it does not hold yet.
/// See `docs/formats/export.md`.
///
/// Nothing that the library holds is changed. A note that cannot be read fails alone and is listed
/// in the report. A run that was stopped or killed can be started again: it goes on with what is
/// missing. Any thread, with a context of its own, whose objects it forgets now and then.
/// `environment` outlives it.
class TesserineImporter {
public:
    explicit TesserineImporter(ImportEnvironment environment)
        : environment_(std::move(environment)) {}

    /// What `run` would do; writes nothing. Throws as `run`.
    ImportPreview preview(
        StoreContext& context,
        const std::filesystem::path& folder,
        const ImportControl& control = {}) const;

    /// Imports the folder. The report is in the library, also when the run was stopped; what is
    /// saved then stays. Throws `TesserineImportError` and `FileError` when the folder is no
    /// export, and `StoreError`.
    TesserineImport run(
        StoreContext& context,
        const std::filesystem::path& folder,
        const ImportControl& control = {}) const;

private:
    const ImportEnvironment environment_;
};

}  // namespace tesserine
