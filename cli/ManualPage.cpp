#include "base/Product.h"
#include "cli/Help.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tesserine::cli {

namespace {

/// The escapes for the characters beyond ASCII that our texts hold; plain roff reads bytes.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> escapes{{
    {"“", "\\(lq"},
    {"”", "\\(rq"},
    {"…", "..."},
}};

/// Text as roff prints it: a backslash is written "\e", a hyphen that is typed "\-", and a point
/// or quote at the start of a line orders nothing.
std::string roff(std::string_view text) {
    std::string result;
    bool startsLine = true;
    while (!text.empty()) {
        const auto* const escape = std::ranges::find_if(
            escapes, [&](const auto& entry) { return text.starts_with(entry.first); });
        if (escape != escapes.end()) {
            result += escape->second;
            text.remove_prefix(escape->first.size());
            startsLine = false;
            continue;
        }
        const char c = text.front();
        if (startsLine && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
        startsLine = c == '\n';
        text.remove_prefix(1);
    }
    return result;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }

std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

std::string optionItem(const Option& option) {
    std::string text = ".TP\n" + bold("--" + std::string(option.name));
    if (!option.value.empty()) text += " " + italic(option.value);
    text += "\n" + roff(option.summary);
    if (option.isRepeatable) text += "; may be repeated";
    return text + ".\n";
}

std::string commandSection(const Command& command) {
    std::string text = ".SS " + bold("tesserine " + std::string(command.path));
    for (const Argument& argument : command.arguments) {
        const std::string name = italic(argument.name) + (argument.isRepeatable ? "\\ ..." : "");
        text += argument.isOptional ? " [" + name + "]" : " " + name;
    }
    text += "\n" + roff(command.summary) + ".\n";
    if (!command.details.empty()) text += roff(command.details) + "\n";
    for (const Option& option : command.options) {
        text += optionItem(option);
    }
    return text + ".PP\nExample:\n.PP\n.nf\n.RS\n" + roff(command.example) + "\n.RE\n.fi\n";
}

constexpr std::string_view beginning = R"(.SH NAME
tesserine \- notes and tasks in a library of your own
.SH SYNOPSIS
.B tesserine
[\fIoptions\fR] \fIcommand\fR ...
.SH DESCRIPTION
.B tesserine
does to a library of notes what its window does, from a terminal and from scripts, also while the
window is open.
Without a command it opens the window where there is a display, and shows an overview elsewhere.
.PP
Notes and the like are named by their UUID, by a unique beginning of it (at least 4 digits), or by
their exact title.
A \- in place of a file reads standard input.
Options may stand before and after the words of a command; \-\- ends them.
)";

constexpr std::string_view ending = R"(.SH EXIT STATUS
.TP
0
Done.
.TP
1
Failed; standard error says why, and nothing is half done.
.TP
2
Wrong usage.
.TP
3
The library could not be opened.
.TP
130
Interrupted.
.SH ENVIRONMENT
.TP
.B TESSERINE_LIBRARY
The folder of the library, where \-\-library is not given.
.TP
.BR TESSERINE_NOW ", " TESSERINE_TIME_ZONE
Stand for \-\-now and \-\-time\-zone.
.TP
.B TESSERINE_SERVICE_URL
The service to sync with, in place of the one that is set.
.TP
.BR VISUAL ", " EDITOR
The editor that
.B tesserine note edit
opens.
.TP
.B NO_COLOR
When set, text is not coloured.
.SH FILES
.TP
.I $XDG_DATA_HOME/Tesserine/Tesserine.sqlite
The library; ~/.local/share without the variable.
.TP
.I $XDG_CONFIG_HOME/Tesserine/preferences.json
The settings; ~/.config without the variable.
.TP
.I $XDG_STATE_HOME/Tesserine/tesserine.log
The log, which holds no text of notes; ~/.local/state without the variable.
)";

}  // namespace

std::string manualPage() {
    std::string text = R"(.TH TESSERINE 1 "" "Tesserine )" + std::string(product::version)
                       + R"(" "User Commands")" + "\n";
    text += beginning;
    text += ".SH OPTIONS OF EVERY COMMAND\n";
    for (const Option& option : commonOptions()) {
        text += optionItem(option);
    }
    text += ".SH COMMANDS\n";
    for (const Command& command : commands()) {
        text += commandSection(command);
    }
    text += ending;
    return text;
}

}  // namespace tesserine::cli
