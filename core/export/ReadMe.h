#pragma once

#include "core/export/ManifestRecords.h"

#include <string>

namespace tesserine {

/// The README.txt of an export. `date` is the day and time of the export for people to read.
std::string readMeOf(
    const manifest::Counts& counts, const std::string& date, const std::string& appVersion);

}  // namespace tesserine
