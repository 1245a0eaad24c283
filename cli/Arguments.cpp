#include "cli/Arguments.h"

#include "base/Text.h"

#include <algorithm>
#include <charconv>

namespace tesserine::cli {

namespace {

/// How many letters must change to make one word the other.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

/// The candidate that `typed` most likely meant; empty when none is close.
std::string nearest(std::string_view typed, const std::vector<std::string>& candidates) {
    if (typed.size() > 40) return {};
    std::string best;
    std::size_t bestDistance = std::max<std::size_t>(typed.size() / 3, 1) + 1;
    for (const std::string& candidate : candidates) {
        const std::size_t d = distance(typed, candidate);
        if (d >= bestDistance) continue;
        bestDistance = d;
        best = candidate;
    }
    return best;
}

const Option* optionNamed(const std::vector<Option>& options, std::string_view name) {
    const auto found = std::ranges::find(options, name, &Option::name);
    return found == options.end() ? nullptr : &*found;
}

std::string dashed(std::string_view name) { return "--" + std::string(name); }

}  // namespace

bool Arguments::has(std::string_view option) const { return find(option) != nullptr; }

const std::string* Arguments::find(std::string_view option) const {
    for (const auto& [name, value] : options_) {
        if (name == option) return &value;
    }
    return nullptr;
}

std::optional<std::string> Arguments::text(std::string_view option) const {
    const std::string* value = find(option);
    if (value == nullptr) return std::nullopt;
    return text::sanitized(*value);
}

std::vector<std::string> Arguments::texts(std::string_view option) const {
    std::vector<std::string> result;
    for (const auto& [name, value] : options_) {
        if (name == option) result.push_back(text::sanitized(value));
    }
    return result;
}

std::optional<std::filesystem::path> Arguments::path(std::string_view option) const {
    const std::string* value = find(option);
    if (value == nullptr) return std::nullopt;
    if (value->empty()) throw UsageError::badValue(dashed(option), "a path");
    return std::filesystem::path(*value);
}

std::optional<std::int64_t> Arguments::integer(
    std::string_view option, std::int64_t least, std::int64_t most) const {
    const std::string* value = find(option);
    if (value == nullptr) return std::nullopt;

    std::int64_t number = 0;
    const char* end = value->data() + value->size();
    const auto [stopped, error] = std::from_chars(value->data(), end, number);
    if (error != std::errc{} || stopped != end || number < least || number > most) {
        throw UsageError::badValue(
            dashed(option),
            "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
}

std::string_view Arguments::oneOf(const std::vector<std::string_view>& options) const {
    std::string_view given;
    for (const std::string_view option : options) {
        if (!has(option)) continue;
        if (!given.empty()) throw UsageError::exclusive(dashed(given), dashed(option));
        given = option;
    }
    return given;
}

std::string Arguments::word(std::size_t index) const { return text::sanitized(words_.at(index)); }

std::optional<std::string> Arguments::wordIfAny(std::size_t index) const {
    if (index >= words_.size()) return std::nullopt;
    return word(index);
}

std::vector<std::string> Arguments::wordsFrom(std::size_t index) const {
    std::vector<std::string> result;
    for (std::size_t i = index; i < words_.size(); ++i) {
        result.push_back(word(i));
    }
    return result;
}

std::vector<std::filesystem::path> Arguments::pathsFrom(std::size_t index) const {
    std::vector<std::filesystem::path> result;
    for (std::size_t i = index; i < words_.size(); ++i) {
        result.emplace_back(words_[i]);
    }
    return result;
}

/// Reads a command line from left to right.
class LineParser {
public:
    explicit LineParser(const std::vector<std::string>& line) : line_(line) {}

    ParsedLine parse() {
        for (position_ = 0; position_ < line_.size(); ++position_) {
            const std::string& token = line_[position_];
            const bool isOption = !optionsEnded_ && token.size() > 1 && token.front() == '-';
            if (isOption && token == "--") {
                optionsEnded_ = true;
            } else if (isOption) {
                takeOption(token);
            } else {
                takeWord(token);
            }
        }
        if (parsed_.wantsHelp || parsed_.wantsVersion) return std::move(parsed_);
        if (parsed_.command == nullptr && !parsed_.group.empty()) throw missingSubcommand();
        if (parsed_.command != nullptr) {
            checkOptions();
            checkWords();
        }
        return std::move(parsed_);
    }

private:
    void takeWord(const std::string& token) {
        if (commandMayGrow() && growCommand(token)) return;
        if (parsed_.command == nullptr) throw unknownCommand(token);
        parsed_.arguments.words_.push_back(token);
    }

    bool commandMayGrow() const {
        return !optionsEnded_ && parsed_.arguments.words_.empty() && depth_ < 2;
    }

    /// Takes `token` as the next word of the command's path, if there is such a command.
    bool growCommand(const std::string& token) {
        if (depth_ == 0 && token == "help") {
            parsed_.wantsHelp = true;
            return true;
        }
        const std::string path = depth_ == 0 ? token : parsed_.group + " " + token;
        const Command* command = findCommand(path);
        const bool isGroup = depth_ == 0 && !commandsOf(token).empty();
        if (command == nullptr && !isGroup) return false;
        parsed_.command = command;
        if (depth_ == 0) parsed_.group = token;
        ++depth_;
        return true;
    }

    void takeOption(const std::string& token) {
        if (token == "-h" || token == "--help") {
            parsed_.wantsHelp = true;
            return;
        }
        if (token == "--version") {
            parsed_.wantsVersion = true;
            return;
        }
        if (!token.starts_with("--")) throw unknownOption(token);

        const std::size_t equals = token.find('=');
        const std::string name = token.substr(2, equals == std::string::npos ? equals : equals - 2);
        const Option* option = lookUp(name);
        if (option == nullptr) throw unknownOption(dashed(name));
        if (!option->isRepeatable && parsed_.arguments.has(name)) {
            throw UsageError::repeated(dashed(name));
        }
        parsed_.arguments.options_.emplace_back(name, valueOf(*option, token, equals));
    }

    const Option* lookUp(const std::string& name) {
        if (const Option* global = optionNamed(globalOptions(), name)) return global;
        if (parsed_.command == nullptr) return nullptr;
        const Option* own = optionNamed(parsed_.command->options, name);
        if (own != nullptr) ++parsed_.arguments.ownOptionCount_;
        return own;
    }

    std::string valueOf(const Option& option, const std::string& token, std::size_t equals) {
        if (option.value.empty()) {
            if (equals != std::string::npos) throw UsageError::needlessValue(dashed(option.name));
            return {};
        }
        if (equals != std::string::npos) return checked(option, token.substr(equals + 1));
        if (position_ + 1 == line_.size()) {
            throw UsageError::missingValue(dashed(option.name), option.value);
        }
        return checked(option, line_[++position_]);
    }

    static std::string checked(const Option& option, std::string value) {
        const bool isChoice = option.choices.empty()
                              || std::ranges::find(option.choices, value) != option.choices.end();
        if (isChoice) return value;
        throw UsageError::badValue(dashed(option.name), alternatives(option.choices));
    }

    /// "backup --to X list" grows from one command into another, which may not know the option.
    void checkOptions() const {
        for (const auto& [name, value] : parsed_.arguments.options_) {
            const bool isKnown = optionNamed(globalOptions(), name) != nullptr
                                 || optionNamed(parsed_.command->options, name) != nullptr;
            if (!isKnown) throw unknownOption(dashed(name));
        }
    }

    void checkWords() const {
        const std::vector<Argument>& expected = parsed_.command->arguments;
        const std::vector<std::string>& words = parsed_.arguments.words_;
        for (std::size_t i = words.size(); i < expected.size(); ++i) {
            if (expected[i].isOptional) break;
            throw UsageError::missingArgument(
                std::string(parsed_.command->path), std::string(expected[i].name));
        }
        const bool takesAll = !expected.empty() && expected.back().isRepeatable;
        if (!takesAll && words.size() > expected.size()) {
            throw UsageError::extraArgument(text::sanitized(words[expected.size()]));
        }
        for (std::size_t i = 0; i < std::min(words.size(), expected.size()); ++i) {
            checkChoice(expected[i], words[i]);
        }
    }

    static void checkChoice(const Argument& argument, const std::string& word) {
        if (argument.choices.empty()) return;
        if (std::ranges::find(argument.choices, word) != argument.choices.end()) return;
        throw UsageError::badArgument(text::sanitized(word), alternatives(argument.choices));
    }

    UsageError missingSubcommand() const {
        std::vector<std::string_view> words;
        for (const Command* command : commandsOf(parsed_.group)) {
            words.push_back(command->path.substr(parsed_.group.size() + 1));
        }
        return UsageError::missingSubcommand(parsed_.group, words);
    }

    UsageError unknownCommand(const std::string& token) const {
        const std::string typed = parsed_.group.empty() ? token : parsed_.group + " " + token;
        std::vector<std::string> known;
        for (const Command& command : commands()) {
            known.emplace_back(command.path);
            if (parsed_.group.empty()) {
                known.emplace_back(command.path.substr(0, command.path.find(' ')));
            }
        }
        return UsageError::unknownCommand(text::sanitized(typed), nearest(typed, known));
    }

    UsageError unknownOption(const std::string& typed) const {
        std::vector<std::string> known;
        for (const Option& option : globalOptions()) {
            known.push_back(dashed(option.name));
        }
        if (parsed_.command != nullptr) {
            for (const Option& option : parsed_.command->options) {
                known.push_back(dashed(option.name));
            }
        }
        return UsageError::unknownOption(text::sanitized(typed), nearest(typed, known));
    }

    const std::vector<std::string>& line_;
    ParsedLine parsed_;
    std::size_t position_ = 0;
    std::size_t depth_ = 0;  // words of the command's path taken so far
    bool optionsEnded_ = false;
};

ParsedLine parseLine(const std::vector<std::string>& line) { return LineParser(line).parse(); }

}  // namespace tesserine::cli
