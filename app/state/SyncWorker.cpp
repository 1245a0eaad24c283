#include "app/state/SyncWorker.h"

#include "base/OperationCancelled.h"
#include "core/store/TesserineStore.h"
#include "sync/SyncService.h"

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

using Phase = SyncState::Phase;

/// After what time alone does not mend, such as a full storage.
constexpr std::chrono::hours longPause{1};
/// After a question, which only the user can answer.
constexpr std::chrono::hours untilAsked{24 * 365};

}  // namespace

SyncWorker::SyncWorker(const Environment& environment, Report report)
    : environment_(environment),
      report_(std::move(report)),
      engine_(
          {.store = environment.store,
           .session = environment.service.account(),
           .client = environment.service.client(),
           .clock = environment.clock,
           .random = environment.random,
           .log = environment.log}),
      schedule_(environment.realClock, environment.interval),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

void SyncWorker::noteChange() {
    const std::scoped_lock lock(mutex_);
    calls_.hasNews = true;
    something_.notify_all();
}

void SyncWorker::syncNow(const SyncEngine::Consent& consent) {
    const std::scoped_lock lock(mutex_);
    calls_.order = consent;
    something_.notify_all();
}

void SyncWorker::reconnect() {
    const std::scoped_lock lock(mutex_);
    calls_.isReconnected = true;
    something_.notify_all();
}

void SyncWorker::run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        const Calls calls = nextCalls(stop);
        if (stop.stop_requested()) return;
        if (calls.isReconnected) {
            channel_.reset();  // one that was cut while the machine slept would hear nothing
            schedule_.tryAgain();
        }
        for (const LiveNews& news : inbox_.take(std::chrono::nanoseconds(0), stop)) {
            hear(news);
        }
        if (calls.order || isDue()) synchronise(calls.order.value_or(SyncEngine::Consent{}), stop);
    }
}

/// Waits for a call, or until it is time.
SyncWorker::Calls SyncWorker::nextCalls(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    something_.wait_for(lock, stop, pause(), [this] { return !calls_.isNone(); });
    return std::exchange(calls_, {});
}

void SyncWorker::hear(const LiveNews& news) {
    using Kind = LiveNews::Kind;
    if (news.kind == Kind::signedOut) environment_.service.account().invalidateAccessToken();
    try {
        schedule_.hear(news, news.kind == Kind::changes ? engine_.cursor() : 0);
    } catch (const std::exception& error) {
        environment_.log.error(std::string("sync: ") + error.what());
    }
}

bool SyncWorker::isDue() {
    const bool isHeldBack = heldBackUntil_ && environment_.realClock.monotonic() < *heldBackUntil_;
    if (isHeldBack) return false;
    try {
        return schedule_.isDue(environment_.store.lastTransactionNumber());
    } catch (const std::exception& error) {
        environment_.log.error(std::string("sync: ") + error.what());
        holdBack(longPause);
        return false;
    }
}

std::chrono::nanoseconds SyncWorker::pause() const {
    const std::chrono::nanoseconds scheduled = schedule_.untilDue();
    if (!heldBackUntil_) return scheduled;
    return std::max(scheduled, *heldBackUntil_ - environment_.realClock.monotonic());
}

void SyncWorker::synchronise(const SyncEngine::Consent& consent, const std::stop_token& stop) {
    heldBackUntil_.reset();
    state_.question.reset();
    try {
        if (!state_.lastSync) state_.lastSync = engine_.lastSync();
        state_.account = environment_.service.account().account();
        if (!state_.account) {
            channel_.reset();
            holdBack(environment_.interval);  // another program may sign in
            return tell(Phase::signedOut);
        }
        // A session that has ended does not look alive while it is asked whether it is.
        if (state_.phase == Phase::signedOut) environment_.service.account().validAccessToken(stop);
        tell(Phase::syncing);
        engine_.synchronise(consent, stop);
        schedule_.succeeded(environment_.store.lastTransactionNumber());
        state_.lastSync = engine_.lastSync();
        tell(Phase::idle);
        if (!channel_) {
            channel_ = environment_.service.listen([this](const LiveNews& news) {
                inbox_.post(news);
                noteChange();
            });
        }
    } catch (const OperationCancelled&) {
        return;
    } catch (const SyncQuestion& question) {
        holdBack(untilAsked);
        state_.account = environment_.service.account().account();
        state_.question = question.kind();
        tell(Phase::asking, question.what());
    } catch (const SyncError& error) {
        handle(error);
    } catch (const UserError& error) {
        holdBack(longPause);
        tell(Phase::waiting, error.what());
    } catch (const std::exception& error) {
        environment_.log.error(std::string("sync: ") + error.what());
        holdBack(SyncSchedule::longestPause);
        tell(Phase::waiting, unexpectedSyncProblem);
    }
}

void SyncWorker::handle(const SyncError& error) {
    if (error.kind() == SyncError::Kind::signedOut) {
        channel_.reset();
        holdBack(environment_.interval);  // without the network, unless another program signs in
        tell(Phase::signedOut, error.what());
        if (isSomebodyElseSignedIn()) syncNow({});  // which asks whether the notes belong there
        return;
    }
    schedule_.failed(error);
    // A page of a network that wants a sign-in, in place of an answer, goes by itself.
    const bool goesByItself = error.isTransient() || error.kind() == SyncError::Kind::malformed;
    if (!goesByItself) holdBack(longPause);
    const bool isOffline = error.kind() == SyncError::Kind::offline;
    tell(isOffline ? Phase::offline : Phase::waiting, error.what());
}

/// Another program may have put another account in the place of the one that was begun for.
bool SyncWorker::isSomebodyElseSignedIn() {
    try {
        const auto present = environment_.service.account().account();
        return state_.account && present && present->id != state_.account->id;
    } catch (const SyncError&) {
        return false;  // nobody can be signed in while the keyring is out of reach
    }
}

void SyncWorker::holdBack(std::chrono::nanoseconds pause) {
    heldBackUntil_ = environment_.realClock.monotonic() + pause;
}

void SyncWorker::tell(Phase phase, const std::string& sentence) {
    const auto left = std::chrono::ceil<std::chrono::seconds>(pause());
    const bool isTriedAgain = phase == Phase::offline || phase == Phase::waiting;
    state_.phase = phase;
    state_.sentence = sentence;
    state_.until = isTriedAgain ? std::optional(environment_.clock.now() + left) : std::nullopt;
    report_(state_);
}

}  // namespace tesserine::app
