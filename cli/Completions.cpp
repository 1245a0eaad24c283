#include "cli/Help.h"

#include <algorithm>
#include <vector>

namespace tesserine::cli {

namespace {

/// In single quotes for a shell: a quote inside becomes '\''.
std::string quoted(std::string_view text) {
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

std::string joined(const std::vector<std::string>& words) {
    std::string result;
    for (const std::string& word : words)
        result += (result.empty() ? "" : " ") + word;
    return result;
}

std::string joined(const std::vector<std::string_view>& words) {
    return joined(std::vector<std::string>(words.begin(), words.end()));
}

std::string secondWords(std::string_view group) {
    std::vector<std::string> words;
    for (const Command* command : commandsOf(group))
        words.emplace_back(command->path.substr(group.size() + 1));
    return joined(words);
}

std::string optionWords(const std::vector<Option>& options) {
    std::vector<std::string> words;
    for (const Option& option : options)
        words.push_back("--" + std::string(option.name));
    return joined(words);
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
    for (const Command& command : commands())
        add(command.options);
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
    if (!option.choices.empty()) return text + "(" + joined(option.choices) + ")";
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
        text += " \\\n                " + quoted(specification);
    }
    return text;
}

}  // namespace

std::string bashCompletion() {
    std::string text =
        "# bash completion for tesserine\n"
        "_tesserine() {\n"
        "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
        "    local words=() word skip=\n"
        "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
        "        if [[ $skip ]]; then skip=; continue; fi\n"
        "        case $word in\n"
        "            --library|--now|--time-zone|--first-weekday) skip=1 ;;\n"
        "            -*) ;;\n"
        "            *) words+=(\"$word\") ;;\n"
        "        esac\n"
        "    done\n"
        "    case $previous in\n";
    for (const Option* option : optionsWithValues()) {
        text += "        --" + std::string(option->name) + ") ";
        if (!option->choices.empty()) {
            text +=
                "COMPREPLY=($(compgen -W " + quoted(joined(option->choices)) + " -- \"$current\"))";
        } else if (option->completion == Completion::file) {
            text += "COMPREPLY=($(compgen -f -- \"$current\"))";
        } else if (option->completion == Completion::folder) {
            text += "COMPREPLY=($(compgen -d -- \"$current\"))";
        } else {
            text += "COMPREPLY=()";
        }
        text += "; return ;;\n";
    }
    text += "    esac\n    local offered=" + quoted(joined(firstWords())) + "\n";
    text +=
        "    local options=" + quoted(optionWords(globalOptions()) + " --help --version") + "\n";
    text += "    case \"${words[*]}\" in\n";
    for (const std::string& word : firstWords()) {
        const std::string second = secondWords(word);
        if (second.empty()) continue;
        text += "        " + quoted(word) + ") offered=" + quoted(second) + " ;;\n";
    }
    text += "    esac\n    case \"${words[*]}\" in\n        '') ;;\n";
    for (const Command& command : commands()) {
        const std::string path(command.path);
        text += "        " + quoted(path) + "|" + quoted(path + " ") + "*) ";
        const bool isGroup = !commandsOf(command.path).empty();
        if (!isGroup) text += "offered=; ";
        if (!command.options.empty()) {
            text += "options+=" + quoted(" " + optionWords(command.options)) + "; ";
        }
        if (completionOf(command) != Completion::nothing) text += "offered=FILES; ";
        text += ";;\n";
    }
    text += "    esac\n"
            "    if [[ $current == -* ]]; then\n"
            "        COMPREPLY=($(compgen -W \"$options\" -- \"$current\"))\n"
            "    elif [[ $offered == FILES ]]; then\n"
            "        COMPREPLY=($(compgen -f -- \"$current\"))\n"
            "    else\n"
            "        COMPREPLY=($(compgen -W \"$offered\" -- \"$current\"))\n"
            "    fi\n"
            "}\n"
            "complete -o filenames -F _tesserine tesserine\n";
    return text;
}

std::string zshCompletion() {
    std::string text = "#compdef tesserine\n"
                       "_tesserine() {\n"
                       "    local -a words_only\n"
                       "    local word skip=\n"
                       "    for word in ${words[2,CURRENT-1]}; do\n"
                       "        if [[ -n $skip ]]; then skip=; continue; fi\n"
                       "        case $word in\n"
                       "            --library|--now|--time-zone|--first-weekday) skip=1 ;;\n"
                       "            -*) ;;\n"
                       "            *) words_only+=($word) ;;\n"
                       "        esac\n"
                       "    done\n"
                       "    case \"${words_only[1,2]}\" in\n";
    for (const Command& command : commands()) {
        const std::string path(command.path);
        const bool isSingle = path.find(' ') == std::string::npos;
        text += "        " + quoted(path);
        if (isSingle && commandsOf(path).empty()) text += "|" + quoted(path + " ") + "*";
        text +=
            ")\n            _arguments" + zshOptions(command.options) + zshOptions(globalOptions());
        text += " \\\n                '*:argument:";
        if (completionOf(command) != Completion::nothing) text += "_files";
        if (!commandsOf(path).empty()) text += "(" + secondWords(path) + ")";
        text += "' ;;\n";
    }
    for (const std::string& word : firstWords()) {
        if (commandsOf(word).empty() || findCommand(word) != nullptr) continue;
        text +=
            "        " + quoted(word) + ")\n            compadd -- " + secondWords(word) + " ;;\n";
    }
    text += "        *)\n            _arguments" + zshOptions(globalOptions())
            + " \\\n                '*:command:(" + joined(firstWords()) + ")' ;;\n";
    text += "    esac\n}\n_tesserine \"$@\"\n";
    return text;
}

std::string fishCompletion() {
    std::string text = "# fish completion for tesserine\ncomplete -c tesserine -f\n";
    const auto option = [](const std::string& condition, const Option& described) {
        std::string line =
            "complete -c tesserine" + condition + " -l " + std::string(described.name);
        if (!described.value.empty()) line += " -r";
        if (!described.choices.empty()) line += " -a " + quoted(joined(described.choices));
        if (described.completion == Completion::file) line += " -F";
        if (described.completion == Completion::folder)
            line += " -a '(__fish_complete_directories)'";
        return line + " -d " + quoted(described.summary) + "\n";
    };
    for (const Option& global : globalOptions())
        text += option("", global);
    for (const std::string& word : firstWords()) {
        const Command* command = findCommand(word);
        const std::string summary =
            command != nullptr ? std::string(command->summary) : "commands on " + word + "s";
        text += "complete -c tesserine -n __fish_use_subcommand -a " + quoted(word) + " -d "
                + quoted(summary) + "\n";
    }
    for (const Command& command : commands()) {
        const std::string path(command.path);
        const std::size_t space = path.find(' ');
        const std::string first = path.substr(0, space);
        std::string condition = " -n " + quoted("__fish_seen_subcommand_from " + first);
        if (space != std::string::npos) {
            const std::string second = path.substr(space + 1);
            text += "complete -c tesserine -n "
                    + quoted(
                        "__fish_seen_subcommand_from " + first
                        + "; and not __fish_seen_subcommand_from " + secondWords(first))
                    + " -a " + quoted(second) + " -d " + quoted(command.summary) + "\n";
            condition = " -n "
                        + quoted(
                            "__fish_seen_subcommand_from " + first
                            + "; and __fish_seen_subcommand_from " + second);
        }
        for (const Option& own : command.options)
            text += option(condition, own);
        if (completionOf(command) != Completion::nothing) {
            text += "complete -c tesserine" + condition + " -F\n";
        }
    }
    return text;
}

}  // namespace tesserine::cli
