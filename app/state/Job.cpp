#include "app/state/Job.h"

#include <cassert>
#include <chrono>
#include <string>
#include <utility>

namespace tesserine::app {

Job::Job(AppEnvironment& environment, WhenLeft whenLeft, QObject* parent)
    : QObject(parent), environment_(environment), whenLeft_(whenLeft) {
    watch_.setInterval(std::chrono::milliseconds(100));
    connect(&watch_, &QTimer::timeout, this, [this] {
        emit progressed(progress_->done, progress_->total);
    });
}

Job::~Job() {
    if (whenLeft_ == WhenLeft::isCancelled) cancel();
}

void Job::start(Work work, std::function<void()> whenDone) {
    assert(!isRunning_ && "one piece of work at a time");
    isRunning_ = true;
    stop_ = std::stop_source();
    progress_ = std::make_shared<Progress>();
    watch_.start();
    environment_.inBackground(
        [work = std::move(work), stop = stop_, progress = progress_](
            StoreContext& context, const std::stop_token& ending) {
            const std::stop_callback whenEnding(ending, [stop]() mutable { stop.request_stop(); });
            work({context, stop.get_token(), [progress](std::size_t done, std::size_t total) {
                      progress->done = done;
                      progress->total = total;
                  }});
        },
        this,
        [this, whenDone = std::move(whenDone)] {
            end();
            if (whenDone) whenDone();
            emit finished();
        },
        [this](const std::string& sentence) {
            end();
            emit failed(QString::fromStdString(sentence));
        });
}

void Job::end() {
    watch_.stop();
    isRunning_ = false;
}

}  // namespace tesserine::app
