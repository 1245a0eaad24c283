#pragma once

#include "base/UserError.h"
#include "server/HTTPFront.h"
#include "server/Service.h"

#include <string>
#include <vector>

namespace tesserine::server {

/// Words that the program does not understand; `what()` says which.
class UsageError final : public UserError {
public:
    using UserError::UserError;
};

/// What the program was asked to do. Everything is checked before anything is done.
struct CommandLine {
    enum class Command { help, addUser, serve };

    Command command = Command::help;
    std::string email{};  ///< of `addUser`
    Service::Configuration service{};
    HTTPFront::Options listening{};

    static const char* const usage;

    /// `words` are those after the name of the program. Throws `UsageError`.
    static CommandLine parse(const std::vector<std::string>& words);
};

}  // namespace tesserine::server
