#include "cli/Interruption.h"

#include "cli/Command.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace tesserine::cli {

namespace {

sigset_t watchedSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&set, signal);
    }
    return set;
}

void raise(int eventDescriptor) {
    const std::uint64_t one = 1;
    while (::write(eventDescriptor, &one, sizeof one) < 0 && errno == EINTR) {}
}

}  // namespace

Interruption::Interruption() {
    const sigset_t set = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signals_ = ::signalfd(-1, &set, SFD_CLOEXEC);
    wake_ = ::eventfd(0, EFD_CLOEXEC);
    end_ = ::eventfd(0, EFD_CLOEXEC);
    watcher_ = std::thread([this] { watch(); });
}

Interruption::~Interruption() {
    raise(end_);
    watcher_.join();
    for (const int descriptor : {signals_, wake_, end_}) {
        ::close(descriptor);
    }
}

void Interruption::watch() {
    while (true) {
        std::array<pollfd, 2> watched{
            {{.fd = end_, .events = POLLIN, .revents = 0},
             {.fd = signals_, .events = POLLIN, .revents = 0}}};
        if (::poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) return;
        if (watched[0].revents != 0) return;
        signalfd_siginfo received = {};
        if (::read(signals_, &received, sizeof received) < 0) continue;
        if (source_.stop_requested()) ::_exit(static_cast<int>(ExitStatus::interrupted));
        source_.request_stop();
        raise(wake_);
    }
}

}  // namespace tesserine::cli
