#include "cli/Help.h"

#include "cli/DisplayText.h"

#include <algorithm>
#include <vector>

namespace tesserine::cli {

namespace {

constexpr std::size_t lineColumns = 80;

struct Entry {
    std::string name;
    std::string text;
};

/// Lines "  name  text", the texts under each other.
std::string listed(const std::vector<Entry>& entries) {
    std::size_t width = 0;
    for (const Entry& entry : entries) {
        width = std::max(width, entry.name.size());
    }
    std::string result;
    for (const Entry& entry : entries) {
        result += "  " + entry.name + std::string(width - entry.name.size() + 2, ' ') + entry.text;
        result += '\n';
    }
    return result;
}

std::string optionText(const Option& option) {
    std::string text(option.summary);
    if (option.isRepeatable) text += " (may be repeated)";
    return text;
}

std::string optionList(const std::vector<Option>& options) {
    std::vector<Entry> entries;
    entries.reserve(options.size());
    for (const Option& option : options) {
        entries.push_back({signature(option), optionText(option)});
    }
    return listed(entries);
}

std::string commonOptionList() {
    return "\nOptions of every command:\n" + optionList(commonOptions());
}

std::string commandList(const std::vector<const Command*>& shown) {
    std::vector<Entry> entries;
    entries.reserve(shown.size());
    for (const Command* command : shown) {
        entries.push_back({std::string(command->path), std::string(command->summary)});
    }
    return listed(entries);
}

std::string word(const Argument& argument) {
    std::string text(argument.name);
    if (argument.isRepeatable) text += "…";
    return argument.isOptional ? "[" + text + "]" : text;
}

/// Lines of at most `lineColumns` columns.
std::string wrapped(std::string_view text) {
    std::string result;
    std::size_t columns = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view next = text.substr(0, end);
        const std::size_t width = displayWidth(next);
        const bool fits = columns > 0 && columns + 1 + width <= lineColumns;
        if (columns > 0) result += fits ? ' ' : '\n';
        columns = fits ? columns + 1 + width : width;
        result += next;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result + "\n";
}

}  // namespace

std::string synopsis(const Command& command) {
    std::string text = "tesserine " + std::string(command.path);
    if (!command.options.empty()) text += " [options]";
    for (const Argument& argument : command.arguments) {
        text += " " + word(argument);
    }
    return text;
}

std::string signature(const Option& option) {
    std::string text = "--" + std::string(option.name);
    if (!option.value.empty()) text += " " + std::string(option.value);
    return text;
}

std::vector<Option> commonOptions() {
    std::vector<Option> options = globalOptions();
    options.push_back({.name = "help", .summary = "Show help on the command"});
    options.push_back({.name = "version", .summary = "Show the version"});
    return options;
}

std::string overallHelp() {
    std::string text = "Notes and tasks in a library of your own.\n\n"
                       "Usage: tesserine [options] COMMAND …\n\nCommands:\n";
    std::vector<const Command*> all;
    for (const Command& command : commands()) {
        all.push_back(&command);
    }
    text += commandList(all);
    text += commonOptionList();
    text += "\n“tesserine COMMAND --help” tells more about a command and shows an example.\n";
    return text;
}

std::string groupHelp(std::string_view group) {
    const std::vector<const Command*> shown = commandsOf(group);
    return "Usage: tesserine " + std::string(group) + " …\n\nCommands:\n" + commandList(shown)
           + "\n“tesserine " + std::string(shown.back()->path)
           + " --help” and so on tell more.\n\nExample:\n  " + std::string(shown.front()->example)
           + "\n";
}

std::string commandHelp(const Command& command) {
    std::string text = "Usage: " + synopsis(command) + "\n\n";
    text += std::string(command.summary) + ".\n";
    if (!command.details.empty()) text += "\n" + wrapped(command.details);
    if (!command.options.empty()) text += "\nOptions:\n" + optionList(command.options);
    const auto others = commandsOf(command.path);
    if (!others.empty()) text += "\nSee also:\n" + commandList(others);
    text += commonOptionList();
    text += "\nExample:\n  " + std::string(command.example) + "\n";
    return text;
}

}  // namespace tesserine::cli
