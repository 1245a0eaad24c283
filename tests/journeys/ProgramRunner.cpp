#include "tests/journeys/ProgramRunner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace tesserine::test {

namespace {

namespace fs = std::filesystem;

struct Pipe {
    int reading = -1;
    int writing = -1;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    return {.reading = ends[0], .writing = ends[1]};
}

struct Terminal {
    int outside = -1;
    int inside = -1;
};

Terminal makeTerminal() {
    Terminal made;
    made.outside = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (made.outside < 0 || ::grantpt(made.outside) != 0 || ::unlockpt(made.outside) != 0) {
        throw std::runtime_error("posix_openpt");
    }
    made.inside = ::open(::ptsname(made.outside), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (made.inside < 0) throw std::runtime_error("ptsname");
    return made;
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
}

int statusOf(pid_t process) {
    int status = 0;
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) throw std::runtime_error("waitpid");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

/// What stands behind the three standard descriptors of a program.
struct Standard {
    int input = STDIN_FILENO;
    int output = STDOUT_FILENO;
    int error = STDERR_FILENO;
};

pid_t start(
    std::vector<std::string> words,
    const std::map<std::string, std::string>& variables,
    const Standard& standard) {
    std::vector<std::string> environment;
    environment.reserve(variables.size());
    for (const auto& [name, value] : variables) {
        environment.push_back(std::string(name).append("=").append(value));
    }

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, standard.input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, standard.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, standard.error, STDERR_FILENO);
    pid_t process = -1;
    const int failure = ::posix_spawnp(
        &process,
        words[0].c_str(),
        &actions,
        nullptr,
        pointers(words).data(),
        pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("could not start " + words[0]);
    return process;
}

void giveAway(const fs::path& folder, uid_t user) {
    if (::chown(folder.c_str(), user, user) != 0) throw std::runtime_error("chown");
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (::lchown(entry.path().c_str(), user, user) != 0) throw std::runtime_error("lchown");
    }
}

}  // namespace

RunningProgram::RunningProgram(
    const std::vector<std::string>& words,
    const std::map<std::string, std::string>& variables,
    Channel channel) {
    ::signal(SIGPIPE, SIG_IGN);
    if (channel == Channel::terminal) {
        Terminal terminal = makeTerminal();
        process_ = start(words, variables, {terminal.inside, terminal.inside, terminal.inside});
        closeOnce(terminal.inside);
        input_ = terminal.outside;
        output_ = ::dup(terminal.outside);
        return;
    }
    Pipe input = makePipe();
    Pipe output = makePipe();
    process_ = start(words, variables, {.input = input.reading, .output = output.writing});
    closeOnce(input.reading);
    closeOnce(output.writing);
    input_ = input.writing;
    output_ = output.reading;
}

RunningProgram::~RunningProgram() {
    closeInput();
    closeOutput();
    if (process_ < 0) return;
    ::kill(process_, SIGKILL);
    statusOf(process_);
}

bool RunningProgram::write(const std::string& text) const {
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = ::write(input_, text.data() + done, text.size() - done);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) done += static_cast<std::size_t>(count);
    }
    return true;
}

void RunningProgram::closeInput() { closeOnce(input_); }

void RunningProgram::closeOutput() { closeOnce(output_); }

std::optional<std::string> RunningProgram::readLine() {
    while (true) {
        const std::size_t end = unread_.find('\n');
        if (end != std::string::npos) {
            std::string line = unread_.substr(0, end);
            unread_.erase(0, end + 1);
            return line;
        }
        if (!readMore()) return std::nullopt;
    }
}

bool RunningProgram::readUntil(const std::string& text) {
    while (true) {
        const std::size_t begin = unread_.find(text);
        if (begin != std::string::npos) {
            unread_.erase(0, begin + text.size());
            return true;
        }
        if (!readMore()) return false;
    }
}

bool RunningProgram::readMore() {
    std::array<char, 4096> piece{};
    ssize_t count = -1;
    do {
        count = ::read(output_, piece.data(), piece.size());
    } while (count < 0 && errno == EINTR);
    if (count <= 0) return false;  // a terminal that was left ends with an error
    unread_.append(piece.data(), static_cast<std::size_t>(count));
    return true;
}

void RunningProgram::signal(int number) const { ::kill(process_, number); }

int RunningProgram::wait() {
    const int status = statusOf(process_);
    process_ = -1;
    return status;
}

ProgramRunner::ProgramRunner() {
    for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const char* value = ::getenv(name)) variables_[name] = value;
    }
    variables_["HOME"] = (folder_ / "home").string();
    variables_["XDG_CONFIG_HOME"] = (folder_ / "config").string();
    variables_["XDG_STATE_HOME"] = (folder_ / "state").string();
    variables_["TESSERINE_LIBRARY"] = library().string();
    variables_["TESSERINE_TIME_ZONE"] = "UTC";
}

std::vector<std::string> ProgramRunner::commandLine(const std::vector<std::string>& words) const {
    std::vector<std::string> line{TESSERINE_PROGRAM};
    line.insert(line.end(), words.begin(), words.end());
    return line;
}

Outcome ProgramRunner::run(const std::vector<std::string>& words, const std::string& input) const {
    putContent(folder_ / "input", input);
    return runShell(R"("$@" <"$IN" >"$OUT" 2>"$ERR")", commandLine(words));
}

Outcome ProgramRunner::runInto(
    const std::string& target, const std::vector<std::string>& words) const {
    const std::string redirection = target == "-" ? ">&-" : ">" + target;
    return runShell(R"("$@" </dev/null 2>"$ERR" )" + redirection, commandLine(words));
}

Outcome ProgramRunner::runUnprivileged(const std::vector<std::string>& words) const {
    if (::geteuid() != 0) return run(words);
    constexpr uid_t nobody = 65'534;
    giveAway(folder_.path(), nobody);
    std::vector<std::string> line{
        "setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--"};
    for (const std::string& word : commandLine(words)) {
        line.push_back(word);
    }
    return runShell(R"("$@" </dev/null >"$OUT" 2>"$ERR")", line);
}

/// A shell makes the redirections; the words reach it as arguments only.
Outcome ProgramRunner::runShell(
    const std::string& script, const std::vector<std::string>& words) const {
    auto variables = variables_;
    variables["IN"] = (folder_ / "input").string();
    variables["OUT"] = (folder_ / "output").string();
    variables["ERR"] = (folder_ / "error").string();
    putContent(folder_ / "output", "");
    putContent(folder_ / "error", "");

    std::vector<std::string> line{"/bin/sh", "-c", script, "sh"};
    line.insert(line.end(), words.begin(), words.end());
    const int status = statusOf(start(line, variables, {}));
    return {
        .status = status,
        .output = contentOf(folder_ / "output"),
        .error = contentOf(folder_ / "error")};
}

}  // namespace tesserine::test
