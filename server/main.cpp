#include "base/Clock.h"
#include "base/Log.h"
#include "base/Random.h"
#include "base/WebAddress.h"
#include "server/HTTPFront.h"
#include "server/Service.h"

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tesserine;

constexpr const char* usage = R"(Usage:
  tesserine-server --data DIR user add EMAIL
  tesserine-server --data DIR serve [--listen HOST:PORT] [--public-url URL]
                   [--certificate FILE --key FILE] [--record-quota MB] [--file-quota MB]

“user add” reads the password from standard input; for an address that is there it sets a new one.
)";

struct UsageProblem {
    std::string sentence;
};

/// The command line: options with values, and the words that are left.
struct Line {
    std::map<std::string, std::string> options;
    std::vector<std::string> words;

    std::optional<std::string> option(const std::string& name) const {
        const auto found = options.find(name);
        return found == options.end() ? std::nullopt : std::optional(found->second);
    }
    std::string required(const std::string& name) const {
        const auto value = option(name);
        if (!value) throw UsageProblem{"--" + name + " is missing."};
        return *value;
    }
    std::optional<std::int64_t> megabytes(const std::string& name) const {
        const auto text = option(name);
        if (!text) return std::nullopt;
        std::int64_t number = 0;
        const char* const end = text->data() + text->size();
        const auto [read, problem] = std::from_chars(text->data(), end, number);
        const bool isNumber =
            problem == std::errc{} && read == end && number >= 0 && number <= INT32_MAX;
        if (!isNumber) throw UsageProblem{"--" + name + " takes whole megabytes."};
        return number * 1'000'000;
    }
};

constexpr std::array<std::string_view, 7> optionNames{
    "data", "listen", "public-url", "certificate", "key", "record-quota", "file-quota"};

Line parse(int count, char** words) {
    Line line;
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        if (!word.starts_with("--")) {
            line.words.push_back(word);
            continue;
        }
        const std::string name = word.substr(2);
        if (std::ranges::find(optionNames, name) == optionNames.end()) {
            throw UsageProblem{"There is no option " + word + "."};
        }
        if (i + 1 == count) throw UsageProblem{word + " needs a value."};
        line.options[name] = words[++i];
    }
    return line;
}

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

server::HTTPFront::Options listening(const Line& line) {
    server::HTTPFront::Options options;
    if (const auto where = line.option("listen")) {
        const auto address = WebAddress::parse("http://" + *where);
        if (!address || address->host.empty() || !address->port) {
            throw UsageProblem{"--listen takes HOST:PORT."};
        }
        options.host = address->host;
        options.port = *address->port;
    }
    options.certificate = line.option("certificate");
    options.key = line.option("key");
    if (options.certificate.has_value() != options.key.has_value()) {
        throw UsageProblem{"--certificate and --key go together."};
    }
    return options;
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

int serve(server::Service& service, const Line& line, const sigset_t& endings) {
    const server::HTTPFront front(service, listening(line));
    std::cout << "Listening on port " << front.port() << "." << std::endl;
    int signal = 0;
    sigwait(&endings, &signal);
    std::cerr << "Ending.\n";
    return 0;
}

int run(const Line& line) {
    // Before the first thread: all of them leave these to the one that waits for the end.
    sigset_t endings;
    sigemptyset(&endings);
    sigaddset(&endings, SIGINT);
    sigaddset(&endings, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    const bool adds = line.words.size() == 3 && line.words[0] == "user" && line.words[1] == "add";
    const bool serves = line.words.size() == 1 && line.words[0] == "serve";
    if (!adds && !serves) throw UsageProblem{"There is no such command."};
    const SystemClock clock;
    SecureRandom random;
    server::Service service(
        {.folder = line.required("data"),
         .publicURL = line.option("public-url").value_or("http://localhost:8080"),
         .quotas =
             {.records = line.megabytes("record-quota"), .files = line.megabytes("file-quota")}},
        {.clock = clock,
         .random = random,
         .log =
             Log(makeStandardErrorLogSink(LogLevel::warning), "app.tesserine.server", "service")});
    return adds ? addUser(service, line.words[2]) : serve(service, line, endings);
}

}  // namespace

int main(int count, char** words) {
    try {
        if (count == 2 && std::string_view(words[1]) == "--help") {
            std::cout << usage;
            return 0;
        }
        return run(parse(count, words));
    } catch (const UsageProblem& problem) {
        std::cerr << problem.sentence << "\n\n" << usage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
