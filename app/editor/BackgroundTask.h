#pragma once

#include <QMetaObject>
#include <QObject>

#include <functional>
#include <future>
#include <utility>

namespace tesserine::app {

/// One piece of work at a time on a thread of its own, for a QObject of the main thread that holds
/// it. Waits for the work when it goes away.
template <class Result>
class BackgroundTask {
public:
    /// `owner` holds the task.
    explicit BackgroundTask(QObject& owner) : owner_(owner) {}

    /// Begins `work`, after what ran before has ended. When it has ended, well or not, `done` is
    /// called on the owner's thread, unless `take` or another `begin` came first.
    void begin(std::function<Result()> work, std::function<void()> done) {
        giveUp();
        const int number = number_;
        running_ = std::async(
            std::launch::async, [this, number, work = std::move(work), done = std::move(done)] {
                const Telling telling([&] { tell(number, done); });
                return work();
            });
    }
    bool isRunning() const { return running_.valid(); }
    /// Waits for the result. Throws what the work threw.
    Result take() {
        ++number_;
        return running_.get();
    }
    /// Waits for the end and forgets the result.
    void giveUp() {
        ++number_;
        running_ = {};
    }

private:
    /// Tells at the end of a scope.
    class Telling {
    public:
        explicit Telling(std::function<void()> tell) : tell_(std::move(tell)) {}
        Telling(const Telling&) = delete;
        Telling& operator=(const Telling&) = delete;
        ~Telling() { tell_(); }

    private:
        std::function<void()> tell_;
    };

    void tell(int number, const std::function<void()>& done) {
        const auto call = [this, number, done] {
            if (number == number_) done();
        };
        QMetaObject::invokeMethod(&owner_, call, Qt::QueuedConnection);
    }

    QObject& owner_;
    int number_ = 0;  // of the work whose end is to be told
    std::future<Result> running_;
};

}  // namespace tesserine::app
