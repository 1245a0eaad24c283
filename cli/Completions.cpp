#include "cli/Help.h"

#include <algorithm>
#include <vector>

namespace tesserine::cli {

namespace {

/// In single quotes for a shell: a quote inside becomes '\''.
std::string shellQuoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'') {
            result += "'\\''";
        } else {
            result += c;
        }
    }
    return result + "'";
}

/// The first words of all commands, each once, in the order of the table.
std::vector<std::string> firstWords() {
    std::vector<std::string> words;
    for (const Command& command : commands()) {
        std::string word(command.path.substr(0, command.path.find(' ')));
        if (std::ranges::find(words, word) == words.end()) words.push_back(std::move(word));
    }
    return words;
}

std::string spaced(const std::vector<std::string>& words) {
    std::string result;
    for (const std::string& word : words) {
        result += (result.empty() ? "" : " ") + word;
    }
    return result;
}

std::string spaced(const std::vector<std::string_view>& words) {
    return spaced(std::vector<std::string>(words.begin(), words.end()));
}

std::string secondWords(std::string_view group) {
    std::vector<std::string> words;
    for (const Command* command : commandsOf(group)) {
        words.emplace_back(command->path.substr(group.size() + 1));
    }
    return spaced(words);
}

std::string optionWords(const std::vector<Option>& options) {
    std::vector<std::string> words;
    words.reserve(options.size());
    for (const Option& option : options) {
        words.push_back("--" + std::string(option.name));
    }
    return spaced(words);
}

/// Every option with a value once: the first with a name decides, as they agree in what they take.
std::vector<const Option*> optionsWithValues() {
    std::vector<const Option*> result;
    const auto add = [&](const std::vector<Option>& options) {
        for (const Option& option : options) {
            const bool isKnown = std::ranges::any_of(
                result, [&](const Option* known) { return known->name == option.name; });
            if (!option.value.empty() && !isKnown) result.push_back(&option);
        }
    };
    add(globalOptions());
    for (const Command& command : commands()) {
        add(command.options);
    }
    return result;
}

Completion completionOf(const Command& command) {
    for (const Argument& argument : command.arguments) {
        if (argument.completion != Completion::nothing) return argument.completion;
    }
    return Completion::nothing;
}

/// The description of a command's value for the zsh function.
std::string zshValue(const Option& option) {
    std::string text = ":" + std::string(option.value) + ":";
    if (!option.choices.empty()) return text + "(" + spaced(option.choices) + ")";
    if (option.completion == Completion::file) return text + "_files";
    if (option.completion == Completion::folder) return text + "_files -/";
    return text;
}

/// Text inside "[…]" of a zsh specification.
std::string zshEscaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
        result += c;
    }
    return result;
}

std::string zshOptions(const std::vector<Option>& options) {
    std::string text;
    for (const Option& option : options) {
        std::string specification = option.isRepeatable ? "*" : "";
        specification += "--" + std::string(option.name);
        specification += "[" + zshEscaped(option.summary) + "]";
        if (!option.value.empty()) specification += zshValue(option);
        text += " \\\n                " + shellQuoted(specification);
    }
    return text;
}

/// Collects the words of the line that are no options into `taken`; the same in both shells but
/// for how the line is asked for.
constexpr std::string_view wordScan = R"(        if [[ -n $skip ]]; then skip=; continue; fi
        case $word in
            --library|--now|--time-zone|--first-weekday) skip=1 ;;
            -*) ;;
            *) taken+=("$word") ;;
        esac
    done
)";

constexpr std::string_view bashBeginning = R"(# bash completion for tesserine
_tesserine() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local taken=() word skip=
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
)";

constexpr std::string_view bashEnding = R"(    esac
    if [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$current"))
    elif [[ $offered == FILES ]]; then
        COMPREPLY=($(compgen -f -- "$current"))
    else
        COMPREPLY=($(compgen -W "$offered" -- "$current"))
    fi
}
complete -o filenames -F _tesserine tesserine
)";

/// What bash offers behind an option.
std::string bashValue(const Option& option) {
    if (!option.choices.empty()) {
        return "($(compgen -W " + shellQuoted(spaced(option.choices)) + " -- \"$current\"))";
    }
    if (option.completion == Completion::file) return "($(compgen -f -- \"$current\"))";
    if (option.completion == Completion::folder) return "($(compgen -d -- \"$current\"))";
    return "()";
}

std::string bashCommand(const Command& command) {
    const std::string path(command.path);
    std::string text = "        " + shellQuoted(path) + "|" + shellQuoted(path + " ") + "*) ";
    if (commandsOf(command.path).empty()) text += "offered=; ";
    if (completionOf(command) != Completion::nothing) text += "offered=FILES; ";
    if (!command.options.empty()) {
        text += "options+=" + shellQuoted(" " + optionWords(command.options)) + "; ";
    }
    return text + ";;\n";
}

constexpr std::string_view zshBeginning = R"(#compdef tesserine
_tesserine() {
    local -a taken
    local word skip=
    for word in ${words[2,CURRENT-1]}; do
)";

std::string zshCommand(const Command& command) {
    const std::string path(command.path);
    const bool takesWords = commandsOf(path).empty();
    std::string text = "        " + shellQuoted(path);
    if (takesWords) text += "|" + shellQuoted(path + " ") + "*";
    text += ")\n            _arguments" + zshOptions(command.options) + zshOptions(commonOptions());
    text += " \\\n                '*:argument:";
    if (completionOf(command) != Completion::nothing) text += "_files";
    if (!takesWords) text += "(" + secondWords(path) + ")";
    return text + "' ;;\n";
}

std::string fishOption(const std::string& condition, const Option& option) {
    std::string line = "complete -c tesserine" + condition + " -l " + std::string(option.name);
    if (option.completion == Completion::file) {
        line += " -r -F";
    } else if (!option.value.empty()) {
        line += " -x";
    }
    if (!option.choices.empty()) line += " -a " + shellQuoted(spaced(option.choices));
    if (option.completion == Completion::folder) line += " -a '(__fish_complete_directories)'";
    return line + " -d " + shellQuoted(option.summary) + "\n";
}

std::string fishCommand(const Command& command) {
    const std::string path(command.path);
    const std::size_t space = path.find(' ');
    const std::string first = path.substr(0, space);
    const std::string seenFirst = "__fish_seen_subcommand_from " + first;
    std::string condition = " -n " + shellQuoted(seenFirst);
    std::string text;
    if (space != std::string::npos) {
        const std::string second = path.substr(space + 1);
        text +=
            "complete -c tesserine -n "
            + shellQuoted(seenFirst + "; and not __fish_seen_subcommand_from " + secondWords(first))
            + " -a " + shellQuoted(second) + " -d " + shellQuoted(command.summary) + "\n";
        condition = " -n " + shellQuoted(seenFirst + "; and __fish_seen_subcommand_from " + second);
    }
    for (const Option& option : command.options) {
        text += fishOption(condition, option);
    }
    if (completionOf(command) != Completion::nothing) {
        text += "complete -c tesserine" + condition + " -F\n";
    }
    return text;
}

}  // namespace

std::string bashCompletion() {
    std::string text(bashBeginning);
    text += wordScan;
    text += "    case $previous in\n";
    for (const Option* option : optionsWithValues()) {
        text += "        --" + std::string(option->name) + ") COMPREPLY=" + bashValue(*option)
                + "; return ;;\n";
    }
    text += "    esac\n    local offered=" + shellQuoted(spaced(firstWords())) + "\n";
    text += "    local options=" + shellQuoted(optionWords(commonOptions())) + "\n";
    text += "    case \"${taken[*]}\" in\n";
    for (const std::string& word : firstWords()) {
        const std::string second = secondWords(word);
        if (second.empty()) continue;
        text += "        " + shellQuoted(word) + ") offered=" + shellQuoted(second) + " ;;\n";
    }
    text += "    esac\n    case \"${taken[*]}\" in\n";
    for (const Command& command : commands()) {
        text += bashCommand(command);
    }
    return text + std::string(bashEnding);
}

std::string zshCompletion() {
    std::string text(zshBeginning);
    text += wordScan;
    text += "    case \"${taken[*]}\" in\n";
    for (const Command& command : commands()) {
        text += zshCommand(command);
    }
    for (const std::string& word : firstWords()) {
        if (commandsOf(word).empty() || findCommand(word) != nullptr) continue;
        text += "        " + shellQuoted(word) + ") compadd -- " + secondWords(word) + " ;;\n";
    }
    text += "        *)\n            _arguments" + zshOptions(commonOptions())
            + " \\\n                '*:command:(" + spaced(firstWords()) + ")' ;;\n";
    return text + "    esac\n}\n_tesserine \"$@\"\n";
}

std::string fishCompletion() {
    std::string text = "# fish completion for tesserine\ncomplete -c tesserine -f\n";
    for (const Option& option : commonOptions()) {
        text += fishOption("", option);
    }
    for (const std::string& word : firstWords()) {
        const Command* command = findCommand(word);
        const std::string summary =
            command != nullptr ? std::string(command->summary) : secondWords(word);
        text += "complete -c tesserine -n __fish_use_subcommand -a " + shellQuoted(word) + " -d "
                + shellQuoted(summary) + "\n";
    }
    for (const Command& command : commands()) {
        text += fishCommand(command);
    }
    return text;
}

}  // namespace tesserine::cli
