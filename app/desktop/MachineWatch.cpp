#include "app/desktop/MachineWatch.h"

namespace tesserine::app {
namespace {

/// NetworkManager's NM_STATE_CONNECTED_LOCAL; above it stand those that reach further.
constexpr uint connectedLocally = 50;

}  // namespace

MachineWatch::MachineWatch(QDBusConnection systemBus, QObject* parent) : QObject(parent) {
    systemBus.connect(
        "org.freedesktop.login1",
        "/org/freedesktop/login1",
        "org.freedesktop.login1.Manager",
        "PrepareForSleep",
        this,
        SLOT(followSleep(bool)));
    systemBus.connect(
        "org.freedesktop.NetworkManager",
        "/org/freedesktop/NetworkManager",
        "org.freedesktop.NetworkManager",
        "StateChanged",
        this,
        SLOT(followNetwork(uint)));
}

void MachineWatch::followSleep(bool isFallingAsleep) {
    if (!isFallingAsleep) emit wokeUp();
}

/// The service may be in the same house: a network without a way to the world is one too.
void MachineWatch::followNetwork(uint state) {
    const bool reachesFurther = state > state_;
    state_ = state;
    if (reachesFurther && state >= connectedLocally) emit networkCameUp();
}

}  // namespace tesserine::app
