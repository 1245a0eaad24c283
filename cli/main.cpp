#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/HTTPSession.h"
#include "base/Keychain.h"
#include "base/Random.h"
#include "cli/DescriptorStream.h"
#include "cli/Environment.h"
#include "cli/Interruption.h"
#include "cli/Process.h"
#include "cli/Program.h"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <istream>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

int main(int count, char** words) {
    using namespace tesserine;

    cli::prepareProcess();
    const cli::Interruption interruption;
    cli::DescriptorInput inputBuffer(STDIN_FILENO, interruption.wakeDescriptor());
    cli::DescriptorOutput outputBuffer(STDOUT_FILENO);
    std::istream input(&inputBuffer);
    std::ostream output(&outputBuffer);
    output.exceptions(std::ios::badbit);

    const SystemClock clock;
    std::optional<HTTPSession> network;
    std::map<std::string, Keychain, std::less<>> keychains;
    SecureRandom random;
    cli::Environment environment{
        .input = input,
        .output = output,
        .error = std::cerr,
        .clock = clock,
        .random = random,
        .variables = cli::environmentVariables(),
        .home = cli::homeFolder(),
        .inputIsTerminal = ::isatty(STDIN_FILENO) == 1,
        .outputIsTerminal = ::isatty(STDOUT_FILENO) == 1,
        .errorIsTerminal = ::isatty(STDERR_FILENO) == 1,
        .terminalColumns = cli::terminalColumns(STDOUT_FILENO),
        .stop = interruption.token(),
        .runProgram = cli::runProgram,
        .showTyping = cli::showTyping,
        .openWindow = [] { cli::becomeProgramBeside("tesserine-desktop"); },
        .network = [&network]() -> HTTPTransport& {
            if (!network) network.emplace();
            return *network;
        },
        .secrets = [&keychains](std::string_view service) -> SecretStore& {
            return keychains.try_emplace(std::string(service), std::string(service)).first->second;
        },
        .programFile = cli::programFile(),
        .systemZone = Calendar::systemZone()};
    const std::vector<std::string> line(words + std::min(count, 1), words + count);
    return static_cast<int>(cli::runCommand(line, environment));
}
