#pragma once

#include "base/Clock.h"

#include <chrono>
#include <deque>
#include <map>
#include <mutex>
#include <string>

namespace tesserine::server {

/// Slows down whoever guesses passwords: so many failures for one name within a quarter of an hour,
/// then none is looked at until the oldest is forgotten. Safe from any thread.
class SignInLimit {
public:
    static constexpr std::size_t allowedFailures = 10;
    static constexpr std::chrono::minutes window{15};

    explicit SignInLimit(const Clock& clock) : clock_(clock) {}

    bool allows(const std::string& name) {
        const std::scoped_lock lock(mutex_);
        forgetOld();
        const auto found = failures_.find(name);
        return found == failures_.end() || found->second.size() < allowedFailures;
    }
    void failed(const std::string& name) {
        const std::scoped_lock lock(mutex_);
        failures_[name].push_back(clock_.monotonic());
    }

private:
    void forgetOld() {
        const auto oldest = clock_.monotonic() - window;
        for (auto& [name, times] : failures_) {
            while (!times.empty() && times.front() < oldest) {
                times.pop_front();
            }
        }
        std::erase_if(failures_, [](const auto& one) { return one.second.empty(); });
    }

    const Clock& clock_;
    std::mutex mutex_;
    std::map<std::string, std::deque<std::chrono::nanoseconds>> failures_;
};

}  // namespace tesserine::server
