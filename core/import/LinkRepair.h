#pragma once

#include "core/import/NoteLinks.h"

namespace tesserine {

class ImportRun;
class StoreContext;

/// Points the links of notes that are in the library to where `links` has found them to lead. Saves
/// `run` now and then.
void repairLinks(StoreContext& context, ImportRun& run, NoteLinks& links);

}  // namespace tesserine
