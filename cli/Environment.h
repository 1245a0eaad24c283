#pragma once

#include "base/Clock.h"
#include "base/Random.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {
class HTTPTransport;
class SecretStore;
}  // namespace tesserine

namespace tesserine::cli {

/// Everything that makes one run of the program differ from another: streams, variables, clock,
/// terminal. The real program fills it from its process, a test by hand.
struct Environment {
    std::istream& input;
    std::ostream& output;
    std::ostream& error;
    const Clock& clock;
    Random& random;

    /// The environment variables.
    std::map<std::string, std::string, std::less<>> variables{};
    std::filesystem::path home{};
    bool inputIsTerminal = false;
    bool outputIsTerminal = false;
    bool errorIsTerminal = false;
    std::size_t terminalColumns = 80;
    /// Asked to stop by Ctrl-C.
    std::stop_token stop{};
    /// Runs a program with arguments on the terminal, waits, and tells its exit status. The first
    /// word is looked up in PATH. None when it could not be started.
    std::function<std::optional<int>(const std::vector<std::string>& words)> runProgram{};
    /// Sets whether the terminal behind `input` shows what is typed.
    std::function<void(bool isShown)> showTyping{};
    /// Starts the window in place of this program; returns only when there is none to start.
    std::function<void()> openWindow{};
    /// The network, started when it is first asked for.
    std::function<HTTPTransport&()> network{};
    /// The user's secrets of a service, such as "app.tesserine.ai".
    std::function<SecretStore&(std::string_view service)> secrets{};
    /// Where this program's file lies.
    std::filesystem::path programFile{};
    /// The time zone of the machine.
    std::string systemZone = "UTC";

    /// The variable, unless it is absent or empty.
    std::optional<std::string> variable(std::string_view name) const;
    /// `$XDG_CONFIG_HOME/Tesserine` and the like: the folder that `variableName` gives, else
    /// `fallback` below the home folder, and "Tesserine" in it.
    std::filesystem::path folder(std::string_view variableName, std::string_view fallback) const;
    /// The language for sorting and the first day of the week, from LC_ALL, LC_COLLATE or LANG.
    std::string locale() const;
};

}  // namespace tesserine::cli
