#pragma once

#include "base/Log.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace tesserine {

/// Runs tasks one at a time in the order they were given, on a thread of its own; a task that is
/// waited for runs on the waiting thread when nothing is before it, which spares two switches. A
/// synchronous call made from a task runs in place, so that code on the queue may call code that
/// expects to be put there. Safe from any thread.
class SerialQueue {
public:
    /// Failures of queued tasks go to `log`, or to standard error.
    explicit SerialQueue(std::string name);
    SerialQueue(std::string name, Log log);
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;
    /// Runs what is queued, even if suspended, then joins the thread. Not from the queue itself.
    ~SerialQueue();

    /// Queues `task`. An exception that leaves it is logged.
    void async(std::function<void()> task);
    /// Runs `task` on the queue and waits (as long as the queue is suspended, too); its exception
    /// is rethrown here.
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
