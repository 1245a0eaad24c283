#include "cli/Process.h"

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>

namespace tesserine::cli {

namespace {

/// The words as exec(3) wants them; good as long as `words` is.
std::vector<char*> pointers(std::vector<std::string>& words) {
    std::vector<char*> result;
    result.reserve(words.size() + 1);
    for (std::string& word : words) {
        result.push_back(word.data());
    }
    result.push_back(nullptr);
    return result;
}

/// The child starts with every signal as a shell would give it.
class SpawnAttributes {
public:
    SpawnAttributes() {
        posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes_, &none);
        sigset_t standard;
        sigemptyset(&standard);
        sigaddset(&standard, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes_, &standard);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

void fillStandardDescriptors() {
    for (int descriptor = ::open("/dev/null", O_RDWR); descriptor >= 0;
         descriptor = ::open("/dev/null", O_RDWR)) {
        if (descriptor <= STDERR_FILENO) continue;
        ::close(descriptor);
        return;
    }
}

}  // namespace

void prepareProcess() {
    fillStandardDescriptors();
    ::umask(077);
    ::signal(SIGPIPE, SIG_IGN);
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    ::setrlimit(RLIMIT_CORE, &none);
#ifndef __SANITIZE_ADDRESS__  // whose search for leaks looks at this process from outside
    ::prctl(PR_SET_DUMPABLE, 0);
#endif
}

std::map<std::string, std::string, std::less<>> environmentVariables() {
    std::map<std::string, std::string, std::less<>> variables;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const std::size_t equals = text.find('=');
        if (equals == std::string_view::npos) continue;
        variables.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return variables;
}

std::filesystem::path homeFolder() {
    const char* home = ::getenv("HOME");
    if (home != nullptr && *home == '/') return home;
    const passwd* entry = ::getpwuid(::geteuid());
    return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

std::size_t terminalColumns(int descriptor) {
    constexpr std::size_t usual = 80;
    winsize size = {};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usual;
    return size.ws_col;
}

void showTyping(bool isShown) {
    termios settings = {};
    if (::tcgetattr(STDIN_FILENO, &settings) != 0) return;
    const auto echo = static_cast<tcflag_t>(ECHO);
    settings.c_lflag = isShown ? settings.c_lflag | echo : settings.c_lflag & ~echo;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &settings);
}

std::optional<int> runProgram(const std::vector<std::string>& words) {
    std::vector<std::string> copies = words;
    const SpawnAttributes attributes;
    pid_t child = 0;
    const int failure = ::posix_spawnp(
        &child, copies[0].c_str(), nullptr, attributes.get(), pointers(copies).data(), environ);
    if (failure != 0) return std::nullopt;

    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return std::nullopt;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::filesystem::path programFile() {
    std::error_code error;
    const auto file = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : file;
}

void becomeProgramBeside(const std::string& name) {
    const auto self = programFile();
    if (self.empty()) return;
    std::vector<std::string> words{(self.parent_path() / name).string()};
    ::execv(words[0].c_str(), pointers(words).data());
}

}  // namespace tesserine::cli
