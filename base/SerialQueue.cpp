#include "base/SerialQueue.h"

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace tesserine {
namespace {

/// Marks this thread as the one that runs a queue's tasks, for the frame's life. A task of one
/// queue may wait for another and run that one's task on the same thread.
class Running {
public:
    explicit Running(const void* queue) : queue_(queue), outer_(innermost) { innermost = this; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() { innermost = outer_; }

    static bool isHere(const void* queue) {
        const Running* frame = innermost;
        while (frame != nullptr && frame->queue_ != queue) {
            frame = frame->outer_;
        }
        return frame != nullptr;
    }

private:
    static thread_local const Running* innermost;
    const void* queue_;  // compared by address only
    const Running* outer_;
};

thread_local const Running* Running::innermost = nullptr;

}  // namespace

struct SerialQueue::State {
    // Fixed after construction.
    std::string name;
    Log log;

    std::mutex mutex;
    std::condition_variable changed;
    // Behind mutex.
    std::deque<std::function<void()>> tasks;
    bool isRunning = false;  // a task, here or on the thread that waits for it
    bool isSuspended = false;
    bool isEnding = false;

    std::thread thread;  // joined by the destructor of the queue

    void run();
    void runTask(const std::function<void()>& task) const noexcept;
    bool takeTurn();
    void endTurn();
};

void SerialQueue::State::run() {
    constexpr std::size_t longestThreadName = 15;
    ::pthread_setname_np(::pthread_self(), name.substr(0, longestThreadName).c_str());
    const Running here(this);

    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(
            lock, [this] { return !isRunning && (isEnding || (!isSuspended && !tasks.empty())); });
        if (tasks.empty()) return;
        std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        isRunning = true;
        lock.unlock();
        runTask(task);
        lock.lock();
        isRunning = false;
    }
}

/// Whether nothing is before the caller, who then runs a task in its own thread and ends its turn.
bool SerialQueue::State::takeTurn() {
    const std::lock_guard lock(mutex);
    const bool isIdle = !isRunning && !isSuspended && tasks.empty();
    if (isIdle) isRunning = true;
    return isIdle;
}

void SerialQueue::State::endTurn() {
    // Told under the lock: whoever waits may end the queue's life at once.
    const std::lock_guard lock(mutex);
    isRunning = false;
    if (!tasks.empty() || isEnding) changed.notify_all();
}

void SerialQueue::State::runTask(const std::function<void()>& task) const noexcept {
    try {
        task();
    } catch (const std::exception& error) {
        log.error("A task of the queue " + name + " failed: " + error.what());
    } catch (...) {
        log.error("A task of the queue " + name + " failed.");
    }
}

SerialQueue::SerialQueue(std::string name)
    : SerialQueue(
        std::move(name),
        Log(makeStandardErrorLogSink(LogLevel::warning), "app.tesserine.core", "queue")) {}

SerialQueue::SerialQueue(std::string name, Log log) : state_(std::make_unique<State>()) {
    state_->name = std::move(name);
    state_->log = std::move(log);
    state_->thread = std::thread([state = state_.get()] { state->run(); });
}

SerialQueue::~SerialQueue() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->isEnding = true;
    }
    state_->changed.notify_all();
    state_->thread.join();
}

void SerialQueue::async(std::function<void()> task) {
    {
        const std::lock_guard lock(state_->mutex);
        state_->tasks.push_back(std::move(task));
    }
    state_->changed.notify_all();
}

void SerialQueue::sync(const std::function<void()>& task) {
    if (isCurrent()) {
        task();
        return;
    }
    if (state_->takeTurn()) {
        struct Turn {
            State& state;
            Running here{&state};
            ~Turn() { state.endTurn(); }
        };
        const Turn turn{*state_};
        task();
        return;
    }

    std::mutex mutex;
    std::condition_variable finished;
    bool isFinished = false;
    std::exception_ptr failure;
    async([&] {
        try {
            task();
        } catch (...) {
            failure = std::current_exception();
        }
        // Told under the lock: the waiting side owns all of these and ends their lives at once.
        const std::lock_guard lock(mutex);
        isFinished = true;
        finished.notify_one();
    });
    std::unique_lock lock(mutex);
    finished.wait(lock, [&] { return isFinished; });
    if (failure) std::rethrow_exception(failure);
}

bool SerialQueue::isCurrent() const { return Running::isHere(state_.get()); }

void SerialQueue::suspend() {
    const std::lock_guard lock(state_->mutex);
    state_->isSuspended = true;
}

void SerialQueue::resume() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->isSuspended = false;
    }
    state_->changed.notify_all();
}

}  // namespace tesserine
