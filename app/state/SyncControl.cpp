#include "app/state/SyncControl.h"

#include "app/state/AppEnvironment.h"
#include "app/state/SyncWorker.h"
#include "sync/SyncService.h"

#include <QSysInfo>

namespace tesserine::app {
namespace {

constexpr std::chrono::seconds signInLook{1};

/// The name by which the service lists this computer.
std::string deviceLabel() {
    const std::string name = QSysInfo::machineHostName().toStdString();
    return name.empty() ? "Computer" : name;
}

}  // namespace

SyncControl::SyncControl(AppEnvironment& environment)
    : environment_(environment),
      clock_(
          environment.setting().realClock == nullptr ? machineClock_
                                                     : *environment.setting().realClock) {
    signInTimer_.setInterval(signInLook);
    connect(&signInTimer_, &QTimer::timeout, this, &SyncControl::endForgottenSignIn);
    connect(&environment_, &AppEnvironment::libraryChanged, this, [this] {
        if (worker_) worker_->noteChange();
    });
}

SyncControl::~SyncControl() = default;

SyncService* SyncControl::service() {
    if (!isLookedUp_) {
        isLookedUp_ = true;
        try {
            const std::string address =
                SyncService::address(environment_.preferences(), environment_.setting().serviceURL);
            services_.push_back(std::make_unique<SyncService>(
                address,
                SyncService::Environment{
                    .session = environment_.network(),
                    .secrets = environment_.secrets(SyncService::secretService(address)),
                    .clock = clock_,
                    .random = environment_.random(),
                    .log = environment_.log(),
                    .socket = environment_.setting().socket}));
        } catch (const SyncSetupError& error) {
            environment_.log().info(error.what());
            services_.push_back(nullptr);
        }
    }
    return services_.back().get();
}

void SyncControl::setAddress(const std::optional<std::string>& address) {
    Preferences& preferences = environment_.preferences();
    if (address) {
        preferences.set(SyncService::addressKey, SyncService::checked(*address));
    } else {
        preferences.remove(SyncService::addressKey);
    }
    cancelSignIn();
    stop();
    isLookedUp_ = false;
    start();
}

// What is kept in step

void SyncControl::start() {
    SyncService* const used = service();
    show({.phase = used == nullptr ? SyncState::Phase::off : SyncState::Phase::starting});
    if (used == nullptr) return;
    worker_ = std::make_unique<SyncWorker>(
        SyncWorker::Environment{
            .store = environment_.store(),
            .service = *used,
            .clock = environment_.clock(),
            .realClock = clock_,
            .random = environment_.random(),
            .log = environment_.log(),
            .interval = environment_.setting().syncInterval},
        [this, used](const SyncState& state) {
            QMetaObject::invokeMethod(
                this,
                [this, used, state] {
                    if (used == service()) show(state);
                },
                Qt::QueuedConnection);
        });
    worker_->setViewedNote(viewedNote_);
}

void SyncControl::stop() { worker_.reset(); }

void SyncControl::show(const SyncState& state) {
    // A sync that the sign-out cut off would say that the session has ended.
    const bool isCutOff =
        isSigningOut_ && state.phase == SyncState::Phase::signedOut && state.account;
    if (isCutOff) return;
    if (!state.account) isSigningOut_ = false;
    state_ = state;
    emit changed();
}

void SyncControl::syncNow(const SyncEngine::Consent& consent) {
    if (worker_) worker_->syncNow(consent);
}

void SyncControl::reconnect() {
    if (worker_) worker_->reconnect();
}

void SyncControl::setViewedNote(const std::optional<Uuid>& note) {
    viewedNote_ = note;
    if (worker_) worker_->setViewedNote(note);
}

// The account

QString SyncControl::beginSignIn() {
    cancelSignIn();
    isSigningIn_ = true;
    signIn_ = std::stop_source();
    signInTimer_.start();
    emit changed();
    return QString::fromStdString(service()->account().beginSignIn());
}

void SyncControl::cancelSignIn() {
    if (!isSigningIn_) return;
    signIn_.request_stop();
    service()->account().cancelSignIn();
    endSignIn();
}

void SyncControl::endForgottenSignIn() {
    if (isTakingCallback_ || service()->account().isSignInPending()) return;
    endSignIn();
    const auto minutes = static_cast<int>(AccountSession::signInPatience.count());
    emit failed(tr("Nobody signed in within %1 minutes. Begin again.").arg(minutes));
}

void SyncControl::endSignIn() {
    isSigningIn_ = false;
    isTakingCallback_ = false;
    signInTimer_.stop();
    emit changed();
}

void SyncControl::takeCallback(const std::string& address) {
    if (!isSigningIn_ || isTakingCallback_) return;
    isTakingCallback_ = true;
    const auto isTaken = std::make_shared<bool>(false);
    environment_.inBackground(
        [account = &service()->account(), address, isTaken, signIn = signIn_](
            StoreContext&, const std::stop_token& ending) mutable {
            const std::stop_callback whenEnding(ending, [&signIn] { signIn.request_stop(); });
            *isTaken = account->handleCallback(address, deviceLabel(), signIn.get_token());
        },
        this,
        [this, isTaken, signIn = signIn_] {
            if (!signIn.stop_requested()) return endCallback(*isTaken);
            if (*isTaken) signOut();  // too late to stop it
        },
        [this, signIn = signIn_](const std::string& sentence) {
            if (signIn.stop_requested()) return;
            endSignIn();
            emit failed(QString::fromStdString(sentence));
        });
}

void SyncControl::endCallback(bool isSignedIn) {
    if (!isSignedIn) {
        isTakingCallback_ = false;
        return endForgottenSignIn();
    }
    state_.phase = SyncState::Phase::starting;
    endSignIn();
    syncNow();
}

void SyncControl::signOut() {
    isSigningOut_ = true;
    const auto lookAgain = [this] { syncNow(); };
    environment_.inBackground(
        [account = &service()->account()](StoreContext&, const std::stop_token&) {
            account->signOut();
        },
        this,
        lookAgain,
        [this, lookAgain](const std::string& sentence) {
            isSigningOut_ = false;
            lookAgain();
            emit failed(QString::fromStdString(sentence));
        });
}

}  // namespace tesserine::app
