#pragma once

#include "cli/Command.h"

#include <string>
#include <vector>

namespace tesserine::cli {

/// Searches and answers as the options of `searchOptions` say.
ExitStatus runSearch(Session& session, const std::string& query, const Arguments& arguments);
std::vector<Option> searchOptions();

}  // namespace tesserine::cli
