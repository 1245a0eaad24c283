#pragma once

#include "app/state/SyncState.h"
#include "sync/LiveInbox.h"
#include "sync/SyncEngine.h"
#include "sync/SyncSchedule.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace tesserine {
class SyncService;
}

namespace tesserine::app {

/// Keeps the library in step on a thread of its own: after every change here, at news from the
/// service, every few minutes, and when it is told to. While nobody is signed in it reaches no
/// network.
///
/// Safe from any thread.
class SyncWorker {
public:
    /// What it stands on; all of it outlives the worker.
    struct Environment {
        TesserineStore& store;
        SyncService& service;
        const Clock& clock;      ///< the time of the library
        const Clock& realClock;  ///< for waiting
        Random& random;
        Log log{};
        /// How often it looks for changes of other devices.
        std::chrono::milliseconds interval = SyncSchedule::interval;
    };
    /// Called on the worker's thread.
    using Report = std::function<void(const SyncState& state)>;

    /// Begins at once.
    SyncWorker(const Environment& environment, Report report);
    SyncWorker(const SyncWorker&) = delete;
    SyncWorker& operator=(const SyncWorker&) = delete;
    /// Stops what runs, which may take a moment.
    ~SyncWorker() = default;

    /// The library was changed, by whomever.
    void noteChange();
    /// Synchronises at once, also where it would wait; `consent` is what the user has agreed to.
    void syncNow(const SyncEngine::Consent& consent);
    /// The way to the service may be open again, and what was open may be cut.
    void reconnect();
    /// As `SyncEngine::setViewedNote`.
    void setViewedNote(const std::optional<Uuid>& note) { engine_.setViewedNote(note); }

private:
    /// What others have told the thread since it last looked.
    struct Calls {
        std::optional<SyncEngine::Consent> order{};
        bool hasNews = false;  ///< of the library or of the service
        bool isReconnected = false;

        bool isNone() const { return !order && !hasNews && !isReconnected; }
    };

    void run(const std::stop_token& stop);
    Calls nextCalls(const std::stop_token& stop);
    void hear(const LiveNews& news);
    bool isDue();
    /// How long nothing is to be done, unless something happens.
    std::chrono::nanoseconds pause() const;
    void synchronise(const SyncEngine::Consent& consent, const std::stop_token& stop);
    void handle(const SyncError& error);
    bool isSomebodyElseSignedIn();
    void holdBack(std::chrono::nanoseconds pause);
    void tell(SyncState::Phase phase, const std::string& sentence = {});

    // Fixed after construction.
    const Environment environment_;
    const Report report_;
    SyncEngine engine_;
    // Touched on the thread only.
    SyncSchedule schedule_;
    SyncState state_;
    std::optional<std::chrono::nanoseconds> heldBackUntil_;  // after what time alone does not mend
    // Behind the mutex.
    std::mutex mutex_;
    std::condition_variable_any something_;
    Calls calls_{.order = SyncEngine::Consent{}};  // the order of the start

    LiveInbox inbox_;
    std::unique_ptr<LiveUpdates> channel_;  // touched on the thread only; open while signed in
    std::jthread thread_;                   // last: it ends before what it uses
};

}  // namespace tesserine::app
