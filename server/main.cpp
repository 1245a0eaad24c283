#include "base/Clock.h"
#include "base/Log.h"
#include "base/Random.h"
#include "server/CommandLine.h"

#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <string>

namespace {

using namespace tesserine;
using server::CommandLine;

/// Keeps a terminal from showing what is typed.
class HiddenTyping {
public:
    HiddenTyping() : isTerminal_(::tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!isTerminal_) return;
        termios hidden = before_;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;
    ~HiddenTyping() {
        if (!isTerminal_) return;
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        std::cerr << "\n";
    }

private:
    termios before_{};
    const bool isTerminal_;
};

std::string askedPassword() {
    const HiddenTyping hidden;
    std::cerr << "Password: " << std::flush;
    std::string password;
    std::getline(std::cin, password);
    return password;
}

int addUser(server::Service& service, const std::string& email) {
    const std::string password = askedPassword();
    if (password.empty()) {
        std::cerr << "The password is empty.\n";
        return 1;
    }
    service.accounts().setPassword(email, password);
    std::cerr << "“" << email << "” can sign in now.\n";
    return 0;
}

int serve(
    server::Service& service, const server::HTTPFront::Options& options, const sigset_t& endings) {
    const server::HTTPFront front(service, options);
    std::cout << "Listening on port " << front.port() << "." << std::endl;
    int signal = 0;
    sigwait(&endings, &signal);
    std::cerr << "Ending.\n";
    return 0;
}

int run(const CommandLine& line) {
    if (line.command == CommandLine::Command::help) {
        std::cout << CommandLine::usage;
        return 0;
    }
    // Before the first thread: all of them leave these to the one that waits for the end.
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGINT);
    sigaddset(&endings, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    const SystemClock clock;
    SecureRandom random;
    const Log log(makeStandardErrorLogSink(LogLevel::warning), "app.tesserine.server", "service");
    server::Service service(line.service, {.clock = clock, .random = random, .log = log});
    return line.command == CommandLine::Command::addUser ? addUser(service, line.email)
                                                         : serve(service, line.listening, endings);
}

}  // namespace

int main(int count, char** words) {
    try {
        return run(CommandLine::parse({words + 1, words + count}));
    } catch (const server::UsageError& error) {
        std::cerr << error.what() << "\n\n" << CommandLine::usage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
