#pragma once

#include "base/UserError.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine::cli {

/// "a, b or c".
std::string alternatives(const std::vector<std::string_view>& words);

/// A command line that cannot be understood: exit status 2.
class UsageError final : public UserError {
public:
    enum class Kind { unknownCommand, unknownOption, badValue, badArguments };

    /// `nearest` is what may have been meant; may be empty.
    static UsageError unknownCommand(const std::string& typed, const std::string& nearest);
    static UsageError missingSubcommand(
        const std::string& group, const std::vector<std::string_view>& known);
    static UsageError unknownOption(const std::string& typed, const std::string& nearest);
    static UsageError missingValue(const std::string& option, std::string_view value);
    static UsageError needlessValue(const std::string& option);
    static UsageError repeated(const std::string& option);
    /// `expected` completes "--limit takes …".
    static UsageError badValue(const std::string& option, const std::string& expected);
    static UsageError badArgument(const std::string& typed, const std::string& expected);
    static UsageError missingArgument(const std::string& command, const std::string& argument);
    static UsageError extraArgument(const std::string& typed);
    /// Two options of which only one may be given.
    static UsageError exclusive(const std::string& first, const std::string& second);
    /// A sentence of a command's own.
    static UsageError because(const std::string& sentence) {
        return {Kind::badArguments, sentence};
    }

    Kind kind() const noexcept { return kind_; }

private:
    UsageError(Kind kind, const std::string& sentence) : UserError(sentence), kind_(kind) {}
    Kind kind_;
};

}  // namespace tesserine::cli
