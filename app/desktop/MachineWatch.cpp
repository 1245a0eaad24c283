#include "app/desktop/MachineWatch.h"

namespace tesserine::app {

MachineWatch::MachineWatch(QDBusConnection systemBus, QObject* parent) : QObject(parent) {
    systemBus.connect(
        "org.freedesktop.login1",
        "/org/freedesktop/login1",
        "org.freedesktop.login1.Manager",
        "PrepareForSleep",
        this,
        SLOT(followSleep(bool)));
}

void MachineWatch::watchNetwork() {
    using Feature = QNetworkInformation::Feature;
    if (!QNetworkInformation::loadBackendByFeatures(Feature::Reachability)) return;
    const QNetworkInformation* const network = QNetworkInformation::instance();
    reach_ = network->reachability();
    connect(network, &QNetworkInformation::reachabilityChanged, this, &MachineWatch::followNetwork);
}

/// The service may be in the same house: a network without a way to the world is one too.
void MachineWatch::followNetwork(QNetworkInformation::Reachability reach) {
    const bool reachesFurther = reach > reach_;
    reach_ = reach;
    if (reachesFurther && reach >= QNetworkInformation::Reachability::Local) emit networkCameUp();
}

void MachineWatch::followSleep(bool isFallingAsleep) {
    if (!isFallingAsleep) emit wokeUp();
}

}  // namespace tesserine::app
