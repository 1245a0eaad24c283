#include "core/store/RemoteChanges.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tesserine {
namespace {

constexpr int longestWaitMilliseconds = 1000;
constexpr int shortestWaitMilliseconds = 5;

}  // namespace

RemoteChangeObserver::RemoteChangeObserver(
    StoreCore& core, SerialQueue& historyQueue, std::function<void()> changed)
    : core_(core),
      historyQueue_(historyQueue),
      changed_(std::move(changed)),
      wakeUp_(::eventfd(0, EFD_CLOEXEC)),
      notices_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      connection_(core.openReader()),
      dataVersion_(connection_->dataVersion()) {
    if (notices_ >= 0) {
        ::inotify_add_watch(
            notices_, core_.configuration().directory.c_str(), IN_MODIFY | IN_CREATE);
    }
    thread_ = std::jthread([this](const std::stop_token& stop) { watch(stop); });
}

RemoteChangeObserver::~RemoteChangeObserver() {
    thread_.request_stop();
    const std::uint64_t one = 1;
    const auto written = ::write(wakeUp_, &one, sizeof one);
    static_cast<void>(written);  // a full counter wakes the thread just as well
    thread_.join();
    core_.close(connection_);
    ::close(wakeUp_);
    if (notices_ >= 0) ::close(notices_);
}

void RemoteChangeObserver::watch(const std::stop_token& stop) {
    int wait = longestWaitMilliseconds;
    while (!stop.stop_requested()) {
        std::array<pollfd, 2> waits{{
            {.fd = wakeUp_, .events = POLLIN, .revents = 0},
            {.fd = notices_, .events = POLLIN, .revents = 0},
        }};
        ::poll(waits.data(), waits.size(), wait);
        if (stop.stop_requested()) return;
        std::array<char, 4096> events{};
        bool isNoticed = false;
        while (notices_ >= 0 && ::read(notices_, events.data(), events.size()) > 0) {
            isNoticed = true;
        }
        // The journal is written, and synced, before the commit shows: look again soon.
        if (isNoticed) wait = shortestWaitMilliseconds;
        wait = look() ? longestWaitMilliseconds : std::min(2 * wait, longestWaitMilliseconds);
    }
}

/// `PRAGMA data_version` changes when another connection commits, so also for this process' own
/// saves; the reader of the history skips those. Tells whether there was one.
bool RemoteChangeObserver::look() {
    try {
        const std::int64_t version = connection_->dataVersion();
        if (version == dataVersion_) return false;
        dataVersion_ = version;
        historyQueue_.async(changed_);
        return true;
    } catch (const SQLiteDatabase::Error& error) {
        core_.log().error(
            "watching for changes failed with code " + std::to_string(error.resultCode()));
        return false;
    }
}

}  // namespace tesserine
