#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

namespace tesserine::test {

/// Stands for the desktop's portal that tells its settings.
class SettingsPortal final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    explicit SettingsPortal(QDBusConnection bus) {
        bus.registerObject(
            "/org/freedesktop/portal/desktop",
            this,
            QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableSignals);
        bus.registerService("org.freedesktop.portal.Desktop");
    }

    uint colorScheme = 0;

public slots:
    // Names of the bus. NOLINTBEGIN(readability-identifier-naming)
    /// Wrapped twice, as the first version of the interface has it.
    Q_SCRIPTABLE QDBusVariant Read(const QString&, const QString&) const {
        return QDBusVariant(QVariant::fromValue(QDBusVariant(colorScheme)));
    }

signals:
    Q_SCRIPTABLE void SettingChanged(
        const QString& group, const QString& key, const QDBusVariant& value);
    // NOLINTEND(readability-identifier-naming)
};

}  // namespace tesserine::test
