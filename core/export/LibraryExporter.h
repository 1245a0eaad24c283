#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Text.h"
#include "core/export/ExportError.h"
#include "core/export/ExportTypes.h"

#include <filesystem>
#include <utility>

namespace tesserine {

class StoreContext;

/// Writes the whole library into an ordinary folder that needs neither the program nor a network to
/// be read: a page for every note, attachments, tasks, an index, a README and a manifest.
///
/// Changes nothing in the library, and shows it as it was when the export began. What the clock,
/// the calendar and the collator are must outlive it.
class LibraryExporter {
public:
    struct Environment {
        const Clock& clock;
        const Calendar& calendar;
        const text::Collator& collator;
        /// The library's own folder, into which nothing is exported; empty for one in memory.
        std::filesystem::path library{};
    };

    explicit LibraryExporter(Environment environment) : environment_(std::move(environment)) {}

    /// Exports into a new folder inside `parent`. `manifest.json` comes last: a folder that has one
    /// is whole. Where nothing can be written, nothing is begun. On the thread that owns `context`,
    /// which must have no changes and is reset now and then, so that memory does not grow with
    /// bodies and files. Throws `ExportError`, `StoreError`.
    ExportSummary run(
        StoreContext& context,
        const std::filesystem::path& parent,
        const ExportOptions& options,
        const ExportControl& control = {}) const;

private:
    const Environment environment_;
};

}  // namespace tesserine
