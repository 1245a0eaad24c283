#include "base/SerialQueue.h"

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace tesserine {
namespace {

/// The queue whose thread this is; compared by address only.
thread_local const void* currentQueue = nullptr;

}  // namespace

struct SerialQueue::State {
    // Fixed after construction.
    std::string name;
    Log log;

    std::mutex mutex;
    std::condition_variable changed;
    // Behind mutex.
    std::deque<std::function<void()>> tasks;
    bool isSuspended = false;
    bool isEnding = false;

    std::thread thread;  // joined by the destructor of the queue

    void run();
    void runTask(const std::function<void()>& task) const noexcept;
};

void SerialQueue::State::run() {
    constexpr std::size_t longestThreadName = 15;
    ::pthread_setname_np(::pthread_self(), name.substr(0, longestThreadName).c_str());
    currentQueue = this;

    std::unique_lock lock(mutex);
    while (true) {
        changed.wait(lock, [this] { return isEnding || (!isSuspended && !tasks.empty()); });
        if (tasks.empty()) return;
        std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        lock.unlock();
        runTask(task);
        lock.lock();
    }
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

bool SerialQueue::isCurrent() const { return currentQueue == state_.get(); }

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
