#pragma once

#include "base/SerialQueue.h"
#include "core/store/StoreCore.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace tesserine {

/// Notices commits of other processes: `changed` runs on `historyQueue` at once when the journal
/// changes and at the latest a second later. Stops when it goes away.
class RemoteChangeObserver {
public:
    RemoteChangeObserver(StoreCore& core, SerialQueue& historyQueue, std::function<void()> changed);
    RemoteChangeObserver(const RemoteChangeObserver&) = delete;
    RemoteChangeObserver& operator=(const RemoteChangeObserver&) = delete;
    ~RemoteChangeObserver();

private:
    void watch(const std::stop_token& stop);
    bool look();

    StoreCore& core_;
    SerialQueue& historyQueue_;
    std::function<void()> changed_;
    int wakeUp_ = -1;   // eventfd that ends the wait
    int notices_ = -1;  // inotify on the library's folder; -1 where there is none
    std::shared_ptr<SQLiteDatabase> connection_;  // used on the watching thread only
    std::int64_t dataVersion_ = 0;
    std::jthread thread_;
};

}  // namespace tesserine
