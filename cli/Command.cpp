#include "cli/Command.h"

#include <algorithm>
#include <utility>

namespace tesserine::cli {

namespace {

std::vector<Command> allCommands() {
    std::vector<Command> all;
    for (const auto part : {
             libraryCommands,      noteCommands,       noteStateCommands,    noteHistoryCommands,
             lockCommands,         attachmentCommands, trashCommands,        notebookCommands,
             tagCommands,          templateCommands,   savedSearchCommands,  searchCommands,
             indexCommands,        taskCommands,       taskConflictCommands, projectCommands,
             taskTemplateCommands, calendarCommands,   importCommands,       libraryImportCommands,
             exportCommands,       backupCommands,     askCommands,          assistantCommands,
             updateCommands,       accountCommands,    syncCommands,         settingsCommands,
             dumpCommands,         batchCommands,
         }) {
        for (Command& command : part()) {
            all.push_back(std::move(command));
        }
    }
    return all;
}

}  // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> table = allCommands();
    return table;
}

const std::vector<Option>& globalOptions() {
    static const std::vector<Option> options{
        {.name = "library",
         .value = "DIR",
         .summary = "The folder that holds the library",
         .completion = Completion::folder},
        {.name = "json", .summary = "Write JSON instead of text"},
        {.name = "now", .value = "INSTANT", .summary = "Work as if it were this time (ISO 8601)"},
        {.name = "time-zone", .value = "ZONE", .summary = "Work in this time zone"},
        {.name = "first-weekday",
         .value = "N",
         .summary = "The first day of the week, from 1 (Sunday) to 7 (Saturday)"},
    };
    return options;
}

const Command* findCommand(std::string_view path) {
    const auto found = std::ranges::find(commands(), path, &Command::path);
    return found == commands().end() ? nullptr : &*found;
}

std::vector<const Command*> commandsOf(std::string_view group) {
    std::vector<const Command*> result;
    for (const Command& command : commands()) {
        const bool isOfGroup = command.path.size() > group.size() && command.path.starts_with(group)
                               && command.path[group.size()] == ' ';
        if (isOfGroup) result.push_back(&command);
    }
    return result;
}

}  // namespace tesserine::cli
