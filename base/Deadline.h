#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <thread>

namespace tesserine {

/// Ends a call that takes too long: a stop token that is used up after `limit` of real time.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds limit)
        : timer_([this, limit](const std::stop_token& isOver) {
              std::mutex mutex;
              std::condition_variable_any never;
              std::unique_lock lock(mutex);
              never.wait_for(lock, isOver, limit, [] { return false; });
              if (!isOver.stop_requested()) source_.request_stop();
          }) {}

    std::stop_token token() const { return source_.get_token(); }

private:
    std::stop_source source_;
    std::jthread timer_;  // last: it ends before the source goes
};

}  // namespace tesserine
