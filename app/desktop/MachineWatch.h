#pragma once

#include <QDBusConnection>
#include <QNetworkInformation>
#include <QObject>

namespace tesserine::app {

/// Tells when the machine wakes up and when a network comes up, where the system says so; nothing
/// happens where it does not. Belongs to the main thread.
class MachineWatch final : public QObject {
    Q_OBJECT

public:
    /// Listens to the session manager on the system's bus, if there is one.
    explicit MachineWatch(QDBusConnection systemBus, QObject* parent = nullptr);

    /// Listens to the network of this machine as well, if one of the plugins that can tell works.
    void watchNetwork();

public slots:
    /// The network is now known to reach so far.
    void followNetwork(QNetworkInformation::Reachability reach);

signals:
    void wokeUp();
    void networkCameUp();

private slots:
    void followSleep(bool isFallingAsleep);

private:
    QNetworkInformation::Reachability reach_ = QNetworkInformation::Reachability::Unknown;
};

}  // namespace tesserine::app
