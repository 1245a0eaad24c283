#include "app/shell/Termination.h"

#include <QSocketNotifier>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>

namespace tesserine::app {
namespace {

constexpr std::array endingSignals{SIGTERM, SIGHUP, SIGINT};

int wake = -1;  // all that the handler may touch

void wakeUp(int /*signal*/) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wake, &one, sizeof one);
}

}  // namespace

Termination::Termination(QObject* parent) : QObject(parent) {
    wake = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (wake < 0) return;  // the program then ends without further ado
    auto* const notifier = new QSocketNotifier(wake, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        emit asked();
    });
    struct sigaction action {};
    action.sa_handler = wakeUp;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int signal : endingSignals) {
        ::sigaction(signal, &action, nullptr);
    }
}

Termination::~Termination() {
    for (const int signal : endingSignals) {
        ::signal(signal, SIG_DFL);
    }
    ::close(wake);
    wake = -1;
}

}  // namespace tesserine::app
