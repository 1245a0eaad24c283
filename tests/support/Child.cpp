#include "tests/support/Child.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

namespace tesserine::test {
namespace {

[[noreturn]] void runAndExit(const std::function<void()>& body) noexcept {
    int status = 0;
    try {
        body();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "child: %s\n", error.what());
        status = childThrew;
    } catch (...) {
        status = childThrew;
    }
    std::fflush(nullptr);
    // Not exit: what the parent registered to run at its end is not the child's to run.
    ::_exit(status);
}

int statusOf(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int runInChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) runAndExit(body);
    return statusOf(child);
}

std::vector<int> runInChildren(int count, const std::function<void(int)>& body) {
    std::array<int, 2> gate{};  // opened by closing it
    if (::pipe(gate.data()) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    std::fflush(nullptr);
    std::vector<pid_t> children;
    children.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number) {
        const pid_t child = ::fork();
        if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
        if (child == 0) {
            runAndExit([&] {
                ::close(gate[1]);
                char nothing = 0;
                if (::read(gate[0], &nothing, 1) == 0) body(number);
            });
        }
        children.push_back(child);
    }
    ::close(gate[0]);
    ::close(gate[1]);
    std::vector<int> statuses;
    statuses.reserve(children.size());
    for (const pid_t child : children) {
        statuses.push_back(statusOf(child));
    }
    return statuses;
}

}  // namespace tesserine::test
