#include "app/commands/CommandTable.h"

#include <algorithm>
#include <cassert>

namespace tesserine::app {
namespace {

using enum CommandContext;
using Menu = CommandMenu;
constexpr auto toggle = Command::Kind::toggle;

constexpr Command commands[] = {
    {"note.new", "New Note", "Ctrl+N", everywhere, "note-add", Menu::file, 1},
    {"task.new", "New Task", "Ctrl+Shift+N", everywhere, "task-add", Menu::file, 1},
    {"note.fromTemplate", "New Note from Template…", "", everywhere, "template", Menu::file, 1},
    {"notebook.new", "New Notebook…", "", everywhere, "notebook", Menu::file, 1},
    {"tab.new", "New Tab", "Ctrl+T", everywhere, "plus", Menu::file, 2},
    {"tab.close", "Close Tab", "Ctrl+W", everywhere, "close", Menu::file, 2},
    {"library.save", "Save", "Ctrl+S", everywhere, "check", Menu::file, 3},
    {"search.save", "Save Search…", "", everywhere, "star", Menu::file, 3},
    {"library.import", "Import…", "", everywhere, "import", Menu::file, 4},
    {"library.export", "Export Library…", "", everywhere, "export", Menu::file, 4},
    {"library.calendar", "Export Tasks as Calendar…", "", everywhere, "", Menu::file, 4},
    {"note.export", "Export Note…", "", everywhere, "", Menu::file, 4},
    {"note.pdf", "Save Note as PDF…", "", everywhere, "file", Menu::file, 5},
    {"note.print", "Print Note…", "", everywhere, "print", Menu::file, 5},
    {"app.settings", "Settings…", "Ctrl+,", everywhere, "settings", Menu::file, 6},
    {"app.quit", "Quit", "Ctrl+Q", everywhere, "", Menu::file, 7},

    {"edit.undo", "Undo", "Ctrl+Z", note, "undo", Menu::edit, 1},
    {"edit.redo", "Redo", "Ctrl+Shift+Z Ctrl+Y", note, "redo", Menu::edit, 1},
    {"edit.pastePlain", "Paste without Styles", "Ctrl+Shift+V", note, "", Menu::edit, 2},
    {"find.open", "Find in Note", "Ctrl+F", everywhere, "find", Menu::edit, 3},
    {"find.next", "Find Next", "F3", everywhere, "", Menu::edit, 3},
    {"find.previous", "Find Previous", "Shift+F3", everywhere, "", Menu::edit, 3},
    {"find.replace", "Find and Replace", "Ctrl+H", everywhere, "", Menu::edit, 3},
    {"list.rename", "Rename", "F2", everywhere, "pencil", Menu::edit, 4},
    {"list.selectAll", "Select All Notes", "Ctrl+A", lists, "", Menu::edit, 4},

    {"view.sidebar", "Sidebar", "F9", everywhere, "sidebar", Menu::view, 1, toggle},
    {"view.outline", "Outline", "", everywhere, "outline", Menu::view, 1, toggle},
    {"view.backlinks", "Links to This Note", "", everywhere, "backlinks", Menu::view, 1, toggle},
    {"view.zoomIn", "Larger Text", "Ctrl++ Ctrl+=", everywhere, "zoom-in", Menu::view, 2},
    {"view.zoomOut", "Smaller Text", "Ctrl+-", everywhere, "zoom-out", Menu::view, 2},
    {"view.zoomReset", "Usual Text Size", "Ctrl+0", everywhere, "", Menu::view, 2},
    {"view.fullScreen", "Full Screen", "F11", everywhere, "", Menu::view, 3, toggle},
    {"view.todayWindow", "Today in a Small Window", "", everywhere, "today", Menu::view, 3, toggle},

    {"go.back", "Back", "Alt+Left", everywhere, "back", Menu::go, 1},
    {"go.forward", "Forward", "Alt+Right", everywhere, "forward", Menu::go, 1},
    {"go.switcher", "Go to Note…", "Ctrl+P", everywhere, "notes", Menu::go, 2},
    {"go.palette", "All Commands…", "Ctrl+Shift+P", everywhere, "commands", Menu::go, 2},
    {"go.search", "Search", "Ctrl+Shift+F F6 /", everywhere, "search", Menu::go, 2},
    {"assistant.ask", "Ask Your Notes", "Ctrl+J", everywhere, "sparkle", Menu::go, 2},
    {"go.allNotes", "All Notes", "", everywhere, "notes", Menu::go, 3},
    {"go.pinned", "Pinned Notes", "", everywhere, "pin", Menu::go, 3},
    {"go.reminders", "Reminders", "", everywhere, "bell", Menu::go, 3},
    {"go.templates", "Templates", "", everywhere, "template", Menu::go, 3},
    {"go.inbox", "Inbox", "", everywhere, "inbox", Menu::go, 3},
    {"go.today", "Today", "", everywhere, "today", Menu::go, 3},
    {"go.upcoming", "Upcoming", "", everywhere, "upcoming", Menu::go, 3},
    {"go.allTasks", "All Tasks", "", everywhere, "all-tasks", Menu::go, 3},
    {"go.completed", "Completed Tasks", "", everywhere, "task-done", Menu::go, 3},
    {"go.calendar", "Calendar", "", everywhere, "calendar", Menu::go, 3},
    {"go.taskTemplates", "Task Templates", "", everywhere, "template", Menu::go, 3},
    {"go.trash", "Trash", "", everywhere, "trash", Menu::go, 3},
    {"tab.next", "Next Tab", "Ctrl+Tab", everywhere, "", Menu::go, 4},
    {"tab.previous", "Previous Tab", "Ctrl+Shift+Tab", everywhere, "", Menu::go, 4},

    {"note.pin", "Pin", "", everywhere, "pin", Menu::note, 1, toggle},
    {"note.tags", "Tags…", "Ctrl+Alt+T", everywhere, "tag", Menu::note, 1},
    {"note.move", "Move to Notebook…", "", everywhere, "notebook", Menu::note, 1},
    {"note.reminder", "Remind Me…", "", everywhere, "bell", Menu::note, 1},
    {"note.attach", "Attach Files…", "", everywhere, "attachment", Menu::note, 2},
    {"note.copyLink", "Copy Link to Note", "", everywhere, "link", Menu::note, 2},
    {"note.share", "Share…", "", everywhere, "", Menu::note, 2},
    {"note.duplicate", "Duplicate", "", everywhere, "duplicate", Menu::note, 3},
    {"note.saveAsTemplate", "Save as Template", "", everywhere, "template", Menu::note, 3},
    {"note.versions", "Show Versions", "", everywhere, "history", Menu::note, 4},
    {"note.lock", "Lock Selection…", "", everywhere, "lock", Menu::note, 4},
    {"assistant.summarize", "Summarize", "", everywhere, "", Menu::assistant, 5},
    {"assistant.explain", "Explain", "", everywhere, "", Menu::assistant, 5},
    {"assistant.rewrite", "Reword", "", everywhere, "", Menu::assistant, 5},
    {"assistant.shorten", "Shorten", "", everywhere, "", Menu::assistant, 5},
    {"assistant.expand", "Expand", "", everywhere, "", Menu::assistant, 5},
    {"assistant.actionItems", "List Action Items", "", everywhere, "", Menu::assistant, 5},
    {"assistant.askNote", "Ask about This Note…", "", everywhere, "", Menu::assistant, 5},
    {"note.trash", "Move to Trash", "Del", lists, "trash", Menu::note, 6},

    {"format.bold", "Bold", "Ctrl+B", note, "bold", Menu::format, 1, toggle},
    {"format.italic", "Italic", "Ctrl+I", note, "italic", Menu::format, 1, toggle},
    {"format.underline", "Underline", "Ctrl+U", note, "underline", Menu::format, 1, toggle},
    {"format.strike", "Strikethrough", "", note, "strike", Menu::format, 1, toggle},
    {"format.highlight", "Highlight", "", note, "highlight", Menu::format, 1, toggle},
    {"format.code", "Code", "", note, "code", Menu::format, 1, toggle},
    {"format.subscript", "Subscript", "", note, "subscript", Menu::format, 1, toggle},
    {"format.superscript", "Superscript", "", note, "superscript", Menu::format, 1, toggle},
    {"format.textColor", "Text Colour…", "", note, "text-color", Menu::format, 1},
    {"format.highlightColor", "Highlight Colour…", "", note, "highlight", Menu::format, 1},
    {"format.clear", "Clear Styles", "", note, "clear-style", Menu::format, 1},
    {"format.paragraph", "Paragraph", "Ctrl+Alt+0", note, "", Menu::heading, 2},
    {"format.heading1", "Heading 1", "Ctrl+Alt+1", note, "", Menu::heading, 2},
    {"format.heading2", "Heading 2", "Ctrl+Alt+2", note, "", Menu::heading, 2},
    {"format.heading3", "Heading 3", "Ctrl+Alt+3", note, "", Menu::heading, 2},
    {"format.heading4", "Heading 4", "Ctrl+Alt+4", note, "", Menu::heading, 2},
    {"format.heading5", "Heading 5", "Ctrl+Alt+5", note, "", Menu::heading, 2},
    {"format.heading6", "Heading 6", "Ctrl+Alt+6", note, "", Menu::heading, 2},
    {"format.numbered", "Numbered List", "Ctrl+Shift+7", note, "numbered-list", Menu::format, 2},
    {"format.bullets", "Bulleted List", "Ctrl+Shift+8", note, "bullet-list", Menu::format, 2},
    {"format.checklist", "Checklist", "Ctrl+Shift+9", note, "checklist", Menu::format, 2},
    {"format.tick", "Tick or Untick", "Ctrl+Return", note, "task-done", Menu::format, 2},
    {"format.alignUsual", "Usual Alignment", "", note, "", Menu::alignment, 3},
    {"format.alignLeft", "Align Left", "", note, "", Menu::alignment, 3},
    {"format.alignCenter", "Align Centre", "", note, "", Menu::alignment, 3},
    {"format.alignRight", "Align Right", "", note, "", Menu::alignment, 3},
    {"format.justify", "Justify", "", note, "", Menu::alignment, 3},
    {"format.indent", "Increase Indent", "", note, "indent", Menu::format, 3},
    {"format.outdent", "Decrease Indent", "", note, "outdent", Menu::format, 3},
    {"format.lineUp", "Move Line Up", "Alt+Up", note, "", Menu::format, 3},
    {"format.lineDown", "Move Line Down", "Alt+Down", note, "", Menu::format, 3},
    {"format.quote", "Quote", "", note, "quote", Menu::format, 4},
    {"format.codeBlock", "Code Block", "", note, "code-block", Menu::format, 4},
    {"format.divider", "Divider", "", note, "divider", Menu::format, 4},
    {"format.table", "Table…", "", note, "table", Menu::format, 4},
    {"format.image", "Picture…", "", note, "image", Menu::format, 4},
    {"format.pictureLarger", "Larger Picture", "Ctrl+Shift+>", note, "", Menu::format, 4},
    {"format.pictureSmaller", "Smaller Picture", "Ctrl+Shift+<", note, "", Menu::format, 4},
    {"format.link", "Link…", "Ctrl+K", note, "link", Menu::format, 5},
    {"format.noteLink", "Link to Note…", "Ctrl+Shift+K", note, "note-link", Menu::format, 5},

    {"task.complete", "Complete or Reopen", "Space", tasks, "task-done", Menu::task, 1},
    {"task.open", "Open Task", "Return", tasks, "open", Menu::task, 1},
    {"task.due", "Due Date…", "D", tasks, "calendar", Menu::task, 2},
    {"task.move", "Move to Project…", "M", tasks, "project", Menu::task, 2},
    {"task.priority1", "Priority 1", "1", tasks, "flag-full", Menu::priority, 2},
    {"task.priority2", "Priority 2", "2", tasks, "flag-full", Menu::priority, 2},
    {"task.priority3", "Priority 3", "3", tasks, "flag-full", Menu::priority, 2},
    {"task.priority4", "No Priority", "4", tasks, "flag", Menu::priority, 2},
    {"task.delete", "Delete Task", "Del", tasks, "trash", Menu::task, 3},

    {"help.keys", "Keyboard Shortcuts", "Ctrl+?", everywhere, "keyboard", Menu::help, 1},
    {"help.welcome", "Welcome Notes", "", everywhere, "help", Menu::help, 1},
    {"help.updates", "Check for Updates…", "", everywhere, "", Menu::help, 2},
    {"help.about", "About Tesserine", "", everywhere, "info", Menu::help, 2},
};

struct OtherWords {
    std::string_view id;
    std::string_view words;
};

constexpr OtherWords otherWords[] = {
    {"note.new", "create add write"},
    {"task.new", "create add todo"},
    {"notebook.new", "create add folder"},
    {"library.save", "sync synchronise"},
    {"search.save", "keep query favourite"},
    {"library.export", "backup"},
    {"note.pdf", "export"},
    {"app.settings", "preferences options"},
    {"app.quit", "exit close"},
    {"find.open", "search"},
    {"view.zoomIn", "zoom bigger font"},
    {"view.zoomOut", "zoom font"},
    {"view.zoomReset", "zoom normal font"},
    {"go.search", "find"},
    {"go.switcher", "open jump"},
    {"go.trash", "bin deleted"},
    {"note.tags", "label"},
    {"note.attach", "insert"},
    {"note.duplicate", "copy"},
    {"note.versions", "history revisions restore"},
    {"note.lock", "encrypt password passphrase"},
    {"note.trash", "delete remove bin"},
    {"assistant.rewrite", "rewrite"},
    {"format.strike", "cross out"},
    {"format.textColor", "color"},
    {"format.highlightColor", "color marker"},
    {"format.numbered", "ordered"},
    {"format.bullets", "unordered"},
    {"format.checklist", "todo tasks"},
    {"format.alignCenter", "center middle"},
    {"format.divider", "insert line rule"},
    {"format.table", "insert"},
    {"format.image", "insert image photo"},
    {"format.link", "insert web address"},
    {"task.complete", "done tick finish"},
    {"task.due", "deadline schedule"},
    {"task.delete", "remove trash"},
    {"help.keys", "hotkeys"},
};

static_assert(
    std::ranges::all_of(
        otherWords,
        [](const OtherWords& entry) {
            return std::ranges::find(commands, entry.id, &Command::id) != std::end(commands);
        }),
    "other words are for commands of the table");

}  // namespace

std::span<const Command> commandTable() { return commands; }

const Command& command(std::string_view id) {
    const auto* const found = std::ranges::find(commands, id, &Command::id);
    assert(found != std::end(commands) && "commands are named as the table does");
    return *found;
}

std::string_view otherWordsFor(std::string_view id) {
    const auto* const found = std::ranges::find(otherWords, id, &OtherWords::id);
    return found == std::end(otherWords) ? std::string_view() : found->words;
}

std::string_view titleOf(CommandMenu menu) {
    switch (menu) {
    case Menu::file: return "File";
    case Menu::edit: return "Edit";
    case Menu::view: return "View";
    case Menu::go: return "Go";
    case Menu::note: return "Note";
    case Menu::assistant: return "Assistant";
    case Menu::format: return "Format";
    case Menu::heading: return "Heading";
    case Menu::alignment: return "Alignment";
    case Menu::task: return "Task";
    case Menu::priority: return "Priority";
    case Menu::help: return "Help";
    }
    return {};
}

std::string_view titleOf(CommandContext context) {
    switch (context) {
    case everywhere: return "Everywhere";
    case lists: return "In lists of notes";
    case note: return "In a note";
    case tasks: return "In lists of tasks";
    }
    return {};
}

}  // namespace tesserine::app
