#pragma once

#include "cli/Command.h"
#include "cli/UsageError.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine::cli {

/// The options and words of one command line, checked against the table of commands.
///
/// Texts come out as valid UTF-8; paths come out byte for byte.
class Arguments {
public:
    bool has(std::string_view option) const;
    /// The value of an option, none when it was not given.
    std::optional<std::string> text(std::string_view option) const;
    std::vector<std::string> texts(std::string_view option) const;
    std::optional<std::filesystem::path> path(std::string_view option) const;
    /// Throws `UsageError` unless the value is a whole number from `least` to `most`.
    std::optional<std::int64_t> integer(
        std::string_view option, std::int64_t least, std::int64_t most) const;
    /// The one of `options` that was given, or empty. Throws `UsageError` when there are two.
    std::string_view oneOf(const std::vector<std::string_view>& options) const;
    /// Whether any option of the command itself was given.
    bool hasOwnOptions() const { return ownOptionCount_ > 0; }

    std::size_t wordCount() const { return words_.size(); }
    /// The word at `index`, which is there (the table of commands says so).
    std::string word(std::size_t index) const;
    std::optional<std::string> wordIfAny(std::size_t index) const;
    std::filesystem::path pathWord(std::size_t index) const { return words_.at(index); }
    std::vector<std::string> wordsFrom(std::size_t index) const;
    std::vector<std::filesystem::path> pathsFrom(std::size_t index) const;

private:
    friend class LineParser;
    const std::string* find(std::string_view option) const;

    std::vector<std::pair<std::string, std::string>> options_;
    std::vector<std::string> words_;
    std::size_t ownOptionCount_ = 0;
};

/// What was typed, taken apart.
struct ParsedLine {
    const Command* command = nullptr;  ///< null when there is none
    std::string group;                 ///< of a line such as "note --help"
    Arguments arguments;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

/// Takes a command line apart (without the program's name). Options may stand before, between and
/// after words; "--" ends them; "-" is a word. Options of a command follow its name. Throws
/// `UsageError`.
ParsedLine parseLine(const std::vector<std::string>& line);

}  // namespace tesserine::cli
