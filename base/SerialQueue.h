#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tesserine {

/// One thread that runs tasks in the order they were given.
///
/// A synchronous call made from the queue's own thread runs in place, so that code on the queue may
/// call code that expects to be put there. Safe from any thread.
class SerialQueue {
public:
    explicit SerialQueue(std::string name);
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    /// Runs what is queued, then joins the thread.
    ~SerialQueue();

    /// Queues `task`. An exception that leaves it is logged.
    void async(std::function<void()> task);
    /// Runs `task` on the queue and waits; its exception is rethrown here.
    void sync(const std::function<void()>& task);
    /// The same with a result.
    template <class Result>
    Result call(const std::function<Result()>& task) {
        std::optional<Result> result;
        sync([&] { result.emplace(task()); });
        return std::move(*result);
    }
    bool isCurrent() const;

    /// A suspended queue keeps tasks and runs none; `resume` runs them.
    void suspend();
    void resume();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tesserine
