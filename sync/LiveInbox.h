#pragma once

#include "sync/LiveUpdates.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stop_token>
#include <vector>

namespace tesserine {

/// News on its way from the channel's thread to the one that syncs. Of each kind only the latest is
/// kept, so that it stays small whatever the service sends. Safe from any thread.
class LiveInbox {
public:
    void post(const LiveNews& news) {
        const std::scoped_lock lock(mutex_);
        latest_[slotOf(news.kind)] = news;
        came_.notify_all();
    }
    /// Takes out what there is; waits for it for `patience` at most.
    std::vector<LiveNews> take(std::chrono::nanoseconds patience, const std::stop_token& stop) {
        std::unique_lock lock(mutex_);
        came_.wait_for(lock, stop, patience, [this] { return !latest_.empty(); });
        std::vector<LiveNews> all;
        for (const auto& [slot, news] : latest_) {
            all.push_back(news);
        }
        latest_.clear();
        return all;
    }

private:
    /// The channel is either open or closed.
    static LiveNews::Kind slotOf(LiveNews::Kind kind) {
        return kind == LiveNews::Kind::closed ? LiveNews::Kind::opened : kind;
    }

    std::mutex mutex_;
    std::condition_variable_any came_;
    std::map<LiveNews::Kind, LiveNews> latest_;
};

}  // namespace tesserine
