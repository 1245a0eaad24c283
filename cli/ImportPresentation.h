#pragma once

#include "base/Uuid.h"
#include "cli/Command.h"
#include "core/import/ImportTypes.h"
#include "core/import/TesserineImporter.h"

#include <boost/json/object.hpp>

#include <functional>

/// How imports are shown.
namespace tesserine::cli {

class Session;

/// The report as JSON: what the library keeps of it, with the notes.
boost::json::object asJSON(const ImportReport& report);

/// The counts, then every note that failed and every warning.
void showReport(Session& session, const ImportReport& report);
/// The same, and what came with the notes.
void showReport(Session& session, const TesserineImport& imported);
/// Shows what `look` finds in the library, or in an empty one where the folder has none. Writes
/// nothing.
ExitStatus showPreview(
    Session& session, const std::function<ImportPreview(StoreContext& library)>& look);

}  // namespace tesserine::cli
