#pragma once

#include "core/import/ImportTypes.h"

#include <filesystem>
#include <utility>
#include <vector>

namespace tesserine {

class StoreContext;

/// Imports Apple Notes: a store (`NoteStore.sqlite`, or the folder that holds it with the files of
/// its attachments) or a folder of exported files; see `docs/formats/apple-notes-import.md`.
///
/// The original is only ever read. A note that cannot be read fails alone and is listed in the
/// report. After a store the library is read again and compared with it. A run that was stopped or
/// killed can be started again. Any thread, with a context of its own, whose objects it forgets now
/// and then. `environment` outlives it.
class AppleNotesImporter {
public:
    explicit AppleNotesImporter(ImportEnvironment environment)
        : environment_(std::move(environment)) {}

    /// What `run` would do; writes nothing. Throws `FileError` when a source is not there,
    /// `AppleNotesError` when a store cannot be read, `SQLiteDatabase::Error` and `StoreError`.
    ImportPreview preview(
        StoreContext& context,
        const std::vector<std::filesystem::path>& sources,
        const ImportOptions& options,
        const ImportControl& control = {}) const;

    /// Imports one store, or folders and files. The report is in the library, also when the run was
    /// stopped; what is saved then stays. Throws as `preview`.
    ImportReport run(
        StoreContext& context,
        const std::vector<std::filesystem::path>& sources,
        const ImportOptions& options,
        const ImportControl& control = {}) const;

private:
    const ImportEnvironment environment_;
};

}  // namespace tesserine
