#pragma once

#include "core/import/ImportTypes.h"

#include <string>
#include <string_view>

namespace tesserine {

/// The report as the library keeps it: one JSON object; see `docs/formats/import-report.md`.
std::string encodedImportReport(const ImportReport& report);
/// What `encodedImportReport` wrote; none for anything else. Unknown keys are ignored.
std::optional<ImportReport> decodedImportReport(std::string_view json);

/// The notes of `report` from number `first` on, with the counts so far: what a batch adds.
std::string encodedImportBatch(const ImportReport& report, std::size_t first);
/// Whether `json` is a batch of the report with this identifier.
bool isImportBatch(std::string_view json, const Uuid& report);
/// Adds the notes and counts of a batch to its report.
void addImportBatch(ImportReport& report, std::string_view json);

}  // namespace tesserine
