#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <string>
#include <vector>

namespace tesserine::test {

/// Stands for the part of a desktop that shows notifications.
class NotificationDesktop final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Shown {
        uint id;
        std::string text;  ///< "title: body [actions]"
        QVariantMap hints;
        QStringList actions;
    };

    explicit NotificationDesktop(QDBusConnection bus) : bus_(std::move(bus)) {
        bus_.registerObject(
            path,
            this,
            QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableSignals);
        bus_.registerService("org.freedesktop.Notifications");
    }

    /// "title: body" of what is on the screen.
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const Shown& one : shown) {
            all.push_back(one.text);
        }
        return all;
    }

    std::vector<Shown> shown;

public slots:
    // Names of the bus. NOLINTBEGIN(readability-identifier-naming)
    Q_SCRIPTABLE uint Notify(
        const QString&,
        uint replaced,
        const QString&,
        const QString& title,
        const QString& body,
        const QStringList& actions,
        const QVariantMap& hints,
        int) {
        std::erase_if(shown, [replaced](const Shown& one) { return one.id == replaced; });
        const uint id = replaced != 0 ? replaced : ++last_;
        shown.push_back({id, (title + ": " + body).toStdString(), hints, actions});
        return id;
    }
    Q_SCRIPTABLE void CloseNotification(uint id) {
        std::erase_if(shown, [id](const Shown& one) { return one.id == id; });
        emit NotificationClosed(id, 3);
    }

signals:
    Q_SCRIPTABLE void ActionInvoked(uint id, const QString& key);
    Q_SCRIPTABLE void NotificationClosed(uint id, uint reason);
    // NOLINTEND(readability-identifier-naming)

private:
    static constexpr const char* path = "/org/freedesktop/Notifications";
    QDBusConnection bus_;
    uint last_ = 0;
};

}  // namespace tesserine::test
