#pragma once

#include <gtest/gtest.h>
#include <QDBusConnection>
#include <QProcess>
#include <QString>

#include <memory>
#include <vector>

namespace tesserine::test {

/// A session bus of the test's own, and connections to it.
class PrivateBus {
public:
    PrivateBus() {
        daemon_.setProgram("dbus-daemon");
        daemon_.setArguments({"--session", "--nofork", "--print-address"});
        daemon_.start();
        while (!daemon_.canReadLine() && daemon_.waitForReadyRead(10'000)) {}
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    }
    ~PrivateBus() {
        for (const QString& name : names_) {
            QDBusConnection::disconnectFromBus(name);
        }
        daemon_.kill();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// As another program would be connected.
    QDBusConnection connection(const QString& name) {
        names_.push_back(name);
        return QDBusConnection::connectToBus(address_, name);
    }

private:
    QProcess daemon_;
    QString address_;
    std::vector<QString> names_;
};

}  // namespace tesserine::test
