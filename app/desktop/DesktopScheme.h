#pragma once

#include "app/look/Theme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace tesserine::app {

/// Whether the desktop prefers light or dark windows, as its settings portal tells.
///
/// Asks without waiting. Says nothing where there is no bus or no portal: the palette of the
/// platform then is all there is to go by.
class DesktopScheme final : public QObject {
    Q_OBJECT

public:
    explicit DesktopScheme(QDBusConnection bus, QObject* parent = nullptr);

signals:
    /// The answer to the first question, and every change of it; `system` is no preference.
    void told(tesserine::app::Theme::Scheme scheme);

private slots:
    void onSettingChanged(const QDBusMessage& change);  // called by name

private:
    void ask(QDBusConnection& bus);
    void tell(const QVariant& value);
};

}  // namespace tesserine::app
