#pragma once

#include <QDBusConnection>
#include <QObject>

namespace tesserine::app {

/// Tells when the machine wakes up and when a network comes up, where the system says so; nothing
/// happens where it does not. Belongs to the main thread.
class MachineWatch final : public QObject {
    Q_OBJECT

public:
    /// Listens to the session manager and to NetworkManager on the system's bus, if there is one.
    explicit MachineWatch(QDBusConnection systemBus, QObject* parent = nullptr);

signals:
    void wokeUp();
    void networkCameUp();

private slots:
    void followSleep(bool isFallingAsleep);
    void followNetwork(uint state);

private:
    uint state_ = 0;  // as NetworkManager counts: the further the network reaches, the higher
};

}  // namespace tesserine::app
