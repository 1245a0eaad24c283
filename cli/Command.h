#pragma once

#include <string_view>
#include <vector>

namespace tesserine::cli {

class Arguments;
class Session;

/// How the program ends; the numbers that scripts rely on.
enum class ExitStatus {
    done = 0,
    failed = 1,
    usage = 2,
    noLibrary = 3,
    interrupted = 130,
};

/// What a command does to the library.
enum class Access {
    none,    ///< does not open it
    reads,   ///< it must be there
    writes,  ///< makes it where there is none
};

/// What a shell offers where a value is expected.
enum class Completion { nothing, file, folder };

/// A word that a command expects after its name.
struct Argument {
    std::string_view name;  ///< as help shows it, such as "NOTE"
    bool isOptional = false;
    bool isRepeatable = false;  ///< takes all the words that are left; the last one only
    std::vector<std::string_view> choices{};
    Completion completion = Completion::nothing;
};

/// A `--name` or `--name VALUE` of a command.
struct Option {
    std::string_view name;   ///< without the dashes
    std::string_view value;  ///< as help shows it, such as "DIR"; empty: takes none
    std::string_view summary;
    bool isRepeatable = false;
    std::vector<std::string_view> choices{};
    Completion completion = Completion::nothing;
};

/// One command of the terminal program. The parser, the help, the manual page and the completions
/// all read the same table of these.
struct Command {
    std::string_view path;     ///< such as "note add"
    std::string_view summary;  ///< one line, a third person verb first, no full stop
    Access access = Access::reads;
    std::vector<Argument> arguments{};
    std::vector<Option> options{};
    std::string_view details{};  ///< further sentences for help and manual; may be empty
    std::string_view example;    ///< a whole command line
    /// Throws `UsageError` or another `UserError`.
    ExitStatus (*run)(Session& session, const Arguments& arguments) = nullptr;
};

/// Every command, in the order of the manual. Built once; safe from any thread.
const std::vector<Command>& commands();
/// The options that every command takes.
const std::vector<Option>& globalOptions();
/// The command with exactly this path, or null.
const Command* findCommand(std::string_view path);
/// The commands whose path begins with the word `group`, "note" for instance.
std::vector<const Command*> commandsOf(std::string_view group);

// The parts of the table, one function to each file of commands.
std::vector<Command> libraryCommands();
std::vector<Command> noteCommands();
std::vector<Command> noteStateCommands();
std::vector<Command> noteHistoryCommands();
std::vector<Command> lockCommands();
std::vector<Command> attachmentCommands();
std::vector<Command> trashCommands();
std::vector<Command> notebookCommands();
std::vector<Command> tagCommands();
std::vector<Command> templateCommands();
std::vector<Command> savedSearchCommands();
std::vector<Command> searchCommands();
std::vector<Command> indexCommands();
std::vector<Command> taskCommands();
std::vector<Command> taskConflictCommands();
std::vector<Command> projectCommands();
std::vector<Command> taskTemplateCommands();
std::vector<Command> calendarCommands();
std::vector<Command> askCommands();
std::vector<Command> assistantCommands();
std::vector<Command> updateCommands();
std::vector<Command> accountCommands();
std::vector<Command> syncCommands();
std::vector<Command> importCommands();
std::vector<Command> libraryImportCommands();
std::vector<Command> exportCommands();
std::vector<Command> backupCommands();
std::vector<Command> settingsCommands();
std::vector<Command> dumpCommands();
std::vector<Command> batchCommands();

}  // namespace tesserine::cli
