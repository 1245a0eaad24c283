#pragma once

#include <span>
#include <string_view>

namespace tesserine::app {

/// Where the keys of a command act.
enum class CommandContext {
    everywhere,  ///< in the whole window
    lists,       ///< while a list of notes or the sidebar has the focus
    note,        ///< while a note is being edited
    tasks,       ///< while a list of tasks has the focus
};

/// A menu of the window. `assistant` stands inside `note`, `heading` and `alignment` inside
/// `format`, `priority` inside `task`, in the group that their commands name.
enum class CommandMenu {
    file,
    edit,
    view,
    go,
    note,
    assistant,
    format,
    heading,
    alignment,
    task,
    priority,
    help
};

/// One thing that a user can do, named once for menus, tool tips, palette and cheat sheet.
struct Command {
    enum class Kind { act, toggle };

    std::string_view id;
    std::string_view title;  ///< as in menus; ends with "…" when it asks something first
    std::string_view keys;   ///< key sequences with a space between; empty: none at first
    CommandContext context;
    std::string_view icon;  ///< of the icon set; empty: none
    CommandMenu menu;
    int group;  ///< commands of a menu that belong together; a line parts the groups
    Kind kind = Kind::act;
};

/// Every command, in the order of the menus.
std::span<const Command> commandTable();

/// The command with this id; asking for one that is not there is a mistake of ours.
const Command& command(std::string_view id);

/// What else people call the command, for whoever looks for it; lower case, often empty.
std::string_view otherWordsFor(std::string_view id);

std::string_view titleOf(CommandMenu menu);
/// "Everywhere", "In a note"…: as a heading.
std::string_view titleOf(CommandContext context);

/// Whether keys of both act at one place, so that they must differ.
constexpr bool overlap(CommandContext one, CommandContext other) {
    return one == other || one == CommandContext::everywhere || other == CommandContext::everywhere;
}

}  // namespace tesserine::app
