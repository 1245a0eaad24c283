#pragma once

#include "app/state/AppEnvironment.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <stop_token>

namespace tesserine::app {

/// One long piece of work on a thread of its own that a page watches and may cancel: an import, an
/// export, a check. Belongs to the main thread.
class Job final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Job)

public:
    /// What the work is given: a context of its own, a token to look at, and a way to tell how far
    /// it is, which may be called as often as it likes.
    struct Given {
        StoreContext& context;
        std::stop_token stop;
        std::function<void(std::size_t done, std::size_t total)> progress;
    };
    using Work = std::function<void(const Given& given)>;

    /// What becomes of the work when the job goes, as with the page that began it. Where half of
    /// it would be worse than none or all, it goes on: until its end, or that of the program.
    enum class WhenLeft { isCancelled, goesOn };
    explicit Job(
        AppEnvironment& environment,
        WhenLeft whenLeft = WhenLeft::isCancelled,
        QObject* parent = nullptr);
    /// Waits for nothing.
    ~Job() override;

    /// Begins; nothing runs yet, or what ran has ended. `whenDone` is called on the main thread
    /// once the work has returned, unless it threw or the job is gone.
    void start(Work work, std::function<void()> whenDone = {});
    void cancel() { stop_.request_stop(); }
    bool isRunning() const { return isRunning_; }
    bool isCancelled() const { return stop_.stop_requested(); }

signals:
    /// At most ten times a second.
    void progressed(std::size_t done, std::size_t total);
    /// The work returned, at its end or because it was cancelled.
    void finished();
    /// It threw; the sentence is for the user.
    void failed(const QString& sentence);

private:
    void end();

    /// Written by the working thread, which may outlive the job.
    struct Progress {
        std::atomic<std::size_t> done{0};
        std::atomic<std::size_t> total{0};
    };

    AppEnvironment& environment_;
    const WhenLeft whenLeft_;
    std::stop_source stop_;
    std::shared_ptr<Progress> progress_;
    QTimer watch_;
    bool isRunning_ = false;
};

}  // namespace tesserine::app
