#include "cli/UsageError.h"

namespace tesserine::cli {

namespace {

std::string hint(const std::string& nearest) {
    return nearest.empty() ? std::string() : " Did you mean “" + nearest + "”?";
}

}  // namespace

std::string alternatives(const std::vector<std::string_view>& words) {
    std::string result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) result += i + 1 == words.size() ? " or " : ", ";
        result += words[i];
    }
    return result;
}

UsageError UsageError::unknownCommand(const std::string& typed, const std::string& nearest) {
    return {Kind::unknownCommand, "There is no command “" + typed + "”." + hint(nearest)};
}

UsageError UsageError::missingSubcommand(
    const std::string& group, const std::vector<std::string_view>& known) {
    return {
        Kind::unknownCommand, "“" + group + "” must be followed by " + alternatives(known) + "."};
}

UsageError UsageError::unknownOption(const std::string& typed, const std::string& nearest) {
    return {Kind::unknownOption, "There is no option “" + typed + "” here." + hint(nearest)};
}

UsageError UsageError::missingValue(const std::string& option, std::string_view value) {
    return {Kind::badValue, option + " must be followed by " + std::string(value) + "."};
}

UsageError UsageError::needlessValue(const std::string& option) {
    return {Kind::badValue, option + " takes no value."};
}

UsageError UsageError::repeated(const std::string& option) {
    return {Kind::badValue, option + " may be given once only."};
}

UsageError UsageError::badValue(const std::string& option, const std::string& expected) {
    return {Kind::badValue, option + " takes " + expected + "."};
}

UsageError UsageError::badArgument(const std::string& typed, const std::string& expected) {
    return {Kind::badArguments, "“" + typed + "” is not " + expected + "."};
}

UsageError UsageError::missingArgument(const std::string& command, const std::string& argument) {
    return {Kind::badArguments, "“" + command + "” needs " + argument + "."};
}

UsageError UsageError::extraArgument(const std::string& typed) {
    return {Kind::badArguments, "“" + typed + "” is one word too many."};
}

UsageError UsageError::exclusive(const std::string& first, const std::string& second) {
    return {Kind::badArguments, first + " and " + second + " cannot be given together."};
}

}  // namespace tesserine::cli
