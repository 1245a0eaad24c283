#pragma once

#include "core/import/ImportTypes.h"

#include <string>
#include <vector>

namespace tesserine {

class CDImportReport;
class StoreContext;

/// What undoing an import did.
struct ImportUndo {
    std::size_t trashed = 0;
    std::size_t gone = 0;  ///< were in the trash already, or deleted
    std::size_t prunedTags = 0;
    std::size_t tasks = 0;    ///< deleted; those that were changed since the import stay
    bool wasStopped = false;  ///< before the end; undoing again goes on
};

/// The reports of imports that the library keeps, and undoing an import by its report.
///
/// While an import runs, its report is one row and a small one for each batch of notes, so that
/// what is saved is always listed and a batch costs the same however long the report is. Reading
/// puts them together. Call it on the thread that owns the context. `clock` outlives it.
class ImportReports {
public:
    explicit ImportReports(const Clock& clock) : clock_(clock) {}

    /// The kept reports, newest first.
    std::vector<CDImportReport*> list(StoreContext& context) const;
    /// Throws `StoreError::notFound` ("The import report could not be found.").
    CDImportReport& get(StoreContext& context, const Uuid& id) const;
    /// The whole report. A row that holds no report gives an empty one with its identifier.
    ImportReport read(StoreContext& context, const CDImportReport& row) const;
    /// "Markdown import, 14 March 2026"
    static std::string title(const ImportReport& report, const Calendar& calendar);
    /// The report as plain text, fit to be kept as a file.
    static std::string text(const ImportReport& report, const Calendar& calendar);

    /// Moves the notes that the import created to the trash, where they are still there, and
    /// removes the tags that nothing carries. Notes that it replaced stay. Saves every 50 notes,
    /// marks the report, and forgets the context's objects. Throws `StoreError`.
    ImportUndo undo(StoreContext& context, const Uuid& id, const ImportControl& control = {}) const;
    /// Removes the report; the notes stay. Does not save.
    void remove(StoreContext& context, CDImportReport& row) const;

    // For importers

    /// The newest report of the same source, if that import was stopped before its end and not
    /// undone: a new run goes on with its seed.
    std::optional<ImportReport> unfinished(
        StoreContext& context, const std::string& format, const std::string& file) const;
    /// Inserts the row of an import that begins.
    void begin(StoreContext& context, const ImportReport& report, const Calendar& calendar) const;
    /// Inserts a row for the notes of `report` from number `first` on.
    void append(StoreContext& context, const ImportReport& report, std::size_t first) const;
    /// Writes the whole report into its row and removes those of the batches.
    void rewrite(StoreContext& context, const ImportReport& report) const;

private:
    const Clock& clock_;
};

}  // namespace tesserine
