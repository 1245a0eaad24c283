#pragma once

#include "cli/Command.h"

#include <string>
#include <string_view>
#include <vector>

/// Texts that are made from the table of commands.
namespace tesserine::cli {

/// "tesserine note pin [options] NOTE…".
std::string synopsis(const Command& command);
/// "--notebook NAME".
std::string signature(const Option& option);

/// What every command takes, with “--help” and “--version”.
std::vector<Option> commonOptions();

/// What `tesserine --help` prints: the commands, a line for each.
std::string overallHelp();
/// What `tesserine note --help` prints.
std::string groupHelp(std::string_view group);
/// What `tesserine note add --help` prints: arguments, options and one example.
std::string commandHelp(const Command& command);

/// The manual page tesserine(1), in roff.
std::string manualPage();
/// Completion scripts for the three shells.
std::string bashCompletion();
std::string zshCompletion();
std::string fishCompletion();

}  // namespace tesserine::cli
