#pragma once

#include "base/Uuid.h"
#include "core/import/ImportTypes.h"
#include "core/import/TesserineImporter.h"

#include <boost/json/object.hpp>

/// How imports are shown.
namespace tesserine::cli {

class Session;

/// The report as JSON: what the library keeps of it, with the notes.
boost::json::object asJSON(const ImportReport& report);

/// The counts, then every note that failed and every warning.
void showReport(Session& session, const ImportReport& report);
/// The same, and what came with the notes.
void showReport(Session& session, const TesserineImport& imported);
void showPreview(Session& session, const ImportPreview& preview);

}  // namespace tesserine::cli
