#pragma once

#include <QObject>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {
class Clock;
class SyncService;
}  // namespace tesserine

namespace tesserine::app {

class AppEnvironment;

/// Sync as the window knows it. Belongs to the main thread and waits for nothing there.
class SyncControl final : public QObject {
    Q_OBJECT

public:
    explicit SyncControl(AppEnvironment& environment);
    ~SyncControl() override;

    /// The service that is set up, or none. What was once given out stays valid as long as this, so
    /// that work in the background may end with it. Reaches neither network nor keyring.
    SyncService* service();
    /// Uses the service at `address` from now on, or without one that of the build. Throws
    /// `SyncSetupError` and `FileError`; all is as before then.
    void setAddress(const std::optional<std::string>& address);

private:
    AppEnvironment& environment_;
    // Waits and tokens follow the real clock, whatever time the window shows.
    const std::unique_ptr<Clock> clock_;
    std::vector<std::unique_ptr<SyncService>> services_;  // the last one is in use, if any
    bool isLookedUp_ = false;                             // whether it is still the right one
};

}  // namespace tesserine::app
