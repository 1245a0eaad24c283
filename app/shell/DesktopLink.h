#pragma once

#include "app/desktop/BusService.h"
#include "app/desktop/MachineWatch.h"
#include "app/desktop/Notifier.h"
#include "app/desktop/Reminders.h"
#include "app/desktop/Request.h"
#include "app/desktop/Tray.h"

#include <QObject>

namespace tesserine::app {

class AppEnvironment;

/// Everything through which the desktop and the program know of each other while it runs:
/// reminders, the bus, the tray, waking up.
class DesktopLink final : public QObject {
    Q_OBJECT

public:
    explicit DesktopLink(AppEnvironment& environment);

    /// Takes over whether the program lives in the tray.
    void refreshTray();
    /// What the user chose of a notification that was shown elsewhere.
    void act(const std::string& identifier, const std::string& action);

signals:
    void asked(const tesserine::app::Request& request);
    void quitAsked();
    /// No desktop shows notifications.
    void notShown(const tesserine::app::Notification& notification);
    void withdrawn(const std::string& identifier);

private:
    Notifier notifier_;
    Reminders reminders_;
    BusService bus_;
    Tray tray_;
    MachineWatch machine_;
};

}  // namespace tesserine::app
