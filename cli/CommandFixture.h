#pragma once

#include "base/Clock.h"
#include "base/JSON.h"
#include "base/Random.h"
#include "cli/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace tesserine::cli {

/// What one command line gave.
struct CommandResult {
    ExitStatus status = ExitStatus::failed;
    std::string output;
    std::string error;

    boost::json::value json() const { return tesserine::json::parse(output); }
    /// The output without the line break at its end: an id, for instance.
    std::string line() const { return output.substr(0, output.find('\n')); }
};

/// A JSON value as a test compares it: a text as it is, anything else as JSON.
inline std::string shown(const boost::json::value& value) {
    if (value.is_string()) return std::string(value.as_string());
    return tesserine::json::write(value);
}

/// Runs whole commands in this process, on a library and a home of their own in a folder that
/// vanishes with it. The time is 2026-03-14 09:15 in UTC.
class CommandFixture : public ::testing::Test {
protected:
    CommandFixture() {
        variables_ = {
            {"XDG_CONFIG_HOME", (folder_ / "config").string()},
            {"XDG_STATE_HOME", (folder_ / "state").string()},
            {"TESSERINE_LIBRARY", library().string()},
            {"LANG", "en_GB.UTF-8"}};
    }

    std::filesystem::path library() const { return folder_ / "library"; }

    CommandResult run(const std::vector<std::string>& line, const std::string& typed = {}) {
        std::istringstream input(typed);
        std::ostringstream output;
        std::ostringstream error;
        Environment environment{
            .input = input,
            .output = output,
            .error = error,
            .clock = clock_,
            .random = random_,
            .variables = variables_,
            .home = folder_ / "home",
            .inputIsTerminal = isTerminal_,
            .outputIsTerminal = isTerminal_,
            .errorIsTerminal = isTerminal_,
            .stop = stop_.get_token(),
            .runProgram = runProgram_,
            .showTyping = [this](bool isShown) { typing_ += isShown ? "shown " : "hidden "; }};
        if (network_ != nullptr) {
            environment.network = [this]() -> HTTPTransport& { return *network_; };
            environment.secrets = [this](std::string_view) -> SecretStore& { return *secrets_; };
        }
        const ExitStatus status = runCommand(line, environment);
        return {.status = status, .output = output.str(), .error = error.str()};
    }

    /// Runs a command that must succeed.
    CommandResult mustRun(const std::vector<std::string>& line, const std::string& typed = {}) {
        CommandResult result = run(line, typed);
        EXPECT_EQ(result.status, ExitStatus::done) << line[0] << ": " << result.error;
        return result;
    }

    /// Adds a note and returns its id.
    std::string addNote(const std::string& title, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"note", "add", "--title", title});
        return mustRun(options).line();
    }

    test::TemporaryFolder folder_;
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    SecureRandom random_;
    std::map<std::string, std::string, std::less<>> variables_;
    std::function<std::optional<int>(const std::vector<std::string>&)> runProgram_;
    std::stop_source stop_;
    bool isTerminal_ = false;
    HTTPTransport* network_ = nullptr;  // what stands in for the network, and for the keyring
    SecretStore* secrets_ = nullptr;
    std::string typing_;  // what the terminal was told of it
};

}  // namespace tesserine::cli
