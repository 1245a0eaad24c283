#include "tests/support/Child.h"

#include <sys/wait.h>
#include <unistd.h>

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

}  // namespace

int runInChild(const std::function<void()>& body) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) runAndExit(body);

    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "waitpid");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace tesserine::test
