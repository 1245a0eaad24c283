#pragma once

#include "app/state/SyncState.h"
#include "base/Clock.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tesserine {
class SyncService;
}  // namespace tesserine

namespace tesserine::app {

class AppEnvironment;
class SyncWorker;

/// Sync as the window knows it: the service, who is signed in, what sync is doing, and what can be
/// asked of it. Belongs to the main thread and waits for nothing there.
class SyncControl final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SyncControl)

public:
    explicit SyncControl(AppEnvironment& environment);
    ~SyncControl() override;

    /// The service that is set up, or none. What was once given out stays valid as long as this, so
    /// that work in the background may end with it. Reaches neither network nor keyring.
    SyncService* service();
    /// Uses the service at `address` from now on, or without one that of the build. Throws
    /// `SyncSetupError` and `FileError`; all is as before then.
    void setAddress(const std::optional<std::string>& address);

    /// From now on the library is kept in step, as soon as somebody is signed in.
    void start();
    /// Ends that; may take a moment.
    void stop();
    const SyncState& state() const { return state_; }
    /// Synchronises at once; `consent` answers the question that `state` asks.
    void syncNow(const SyncEngine::Consent& consent = {});
    /// The machine woke up or a network came up: the service may be in reach again.
    void reconnect();
    /// The note that is open, or none: of the files that are missing its own come first.
    void setViewedNote(const std::optional<Uuid>& note);

    /// Whether a sign-in that began here waits for the browser or for the service. One that nobody
    /// finishes in the browser fails after `AccountSession::signInPatience`.
    bool isSigningIn() const { return isSigningIn_; }
    /// Begins a sign-in and returns the page to open in a browser. There is a service.
    QString beginSignIn();
    void cancelSignIn();
    /// Takes an address that was opened with the program. One that nobody waits for is ignored.
    void takeCallback(const std::string& address);
    /// Forgets the account, within a few seconds whatever the service says.
    void signOut();

signals:
    /// State, service or sign-in are not what they were.
    void changed();
    /// Signing in or out did not work; the sentence is for the user.
    void failed(const QString& sentence);

private:
    void show(const SyncState& state);
    void endForgottenSignIn();
    void endCallback(bool isSignedIn);
    void endSignIn();

    AppEnvironment& environment_;
    // Waits and tokens follow the real clock, whatever time the window shows.
    const SystemClock machineClock_;
    const Clock& clock_;
    std::vector<std::unique_ptr<SyncService>> services_;  // the last one is in use, if any
    bool isLookedUp_ = false;                             // whether it is still the right one
    SyncState state_;
    bool isSigningIn_ = false;
    bool isTakingCallback_ = false;
    QTimer signInTimer_;  // looks whether the present sign-in was forgotten
    bool isSigningOut_ = false;
    std::stop_source signIn_;  // of the present sign-in
    std::optional<Uuid> viewedNote_;
    std::unique_ptr<SyncWorker> worker_;
};

}  // namespace tesserine::app
