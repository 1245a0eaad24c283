#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What the program asks of its own process.
namespace tesserine::cli {

/// Private files, no core dumps, no death by a closed pipe, and something behind each of the three
/// standard descriptors: a library file must never be opened in the place of one of them.
void prepareProcess();

std::map<std::string, std::string, std::less<>> environmentVariables();
std::filesystem::path homeFolder();
/// Columns of the terminal behind a descriptor; 80 when it does not say.
std::size_t terminalColumns(int descriptor);

/// Sets whether the terminal behind standard input shows what is typed; nothing without one.
void showTyping(bool isShown);

/// Where this program's file lies; empty when the system does not say.
std::filesystem::path programFile();

/// Runs a program and waits for it; its exit status, 128 + n when a signal ended it, none when it
/// could not be started.
std::optional<int> runProgram(const std::vector<std::string>& words);
/// Replaces this process by the program `name` that lies beside it, if there is one.
void becomeProgramBeside(const std::string& name);

}  // namespace tesserine::cli
