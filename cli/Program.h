#pragma once

#include "cli/Command.h"
#include "cli/Environment.h"

#include <string>
#include <vector>

namespace tesserine::cli {

/// Runs one command line (without the program's name) and tells how it ended. Failures are
/// sentences on `environment.error`; nothing is thrown.
ExitStatus runCommand(const std::vector<std::string>& line, Environment& environment);

}  // namespace tesserine::cli
