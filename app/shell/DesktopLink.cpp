#include "app/shell/DesktopLink.h"

#include "app/state/AppEnvironment.h"
#include "app/state/SyncControl.h"

#include <QApplication>
#include <QDBusConnection>

namespace tesserine::app {

DesktopLink::DesktopLink(AppEnvironment& environment)
    : notifier_(QDBusConnection::sessionBus()),
      reminders_(environment, notifier_),
      bus_(environment, QDBusConnection::sessionBus()),
      tray_(environment),
      machine_(QDBusConnection::systemBus()) {
    connect(&bus_, &BusService::asked, this, &DesktopLink::asked);
    connect(&tray_, &Tray::asked, this, &DesktopLink::asked);
    connect(&tray_, &Tray::quitAsked, this, &DesktopLink::quitAsked);
    connect(&reminders_, &Reminders::chosen, this, [this](const Place& place) {
        emit asked({.kind = Request::Kind::go, .place = place});
    });
    connect(&notifier_, &Notifier::notShown, this, &DesktopLink::notShown);
    connect(&notifier_, &Notifier::withdrawn, this, &DesktopLink::withdrawn);
    connect(&machine_, &MachineWatch::wokeUp, &reminders_, &Reminders::wake);
    const auto reconnect = [&environment] { environment.syncControl().reconnect(); };
    connect(&machine_, &MachineWatch::wokeUp, this, reconnect);
    connect(&machine_, &MachineWatch::networkCameUp, this, reconnect);
    refreshTray();
    reminders_.start();
}

void DesktopLink::act(const std::string& identifier, const std::string& action) {
    emit notifier_.acted(identifier, action);
}

void DesktopLink::refreshTray() {
    tray_.refresh();
    QApplication::setQuitOnLastWindowClosed(!tray_.isOn());
}

}  // namespace tesserine::app
