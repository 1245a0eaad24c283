#include "app/desktop/DesktopScheme.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace tesserine::app {
namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.Settings";
constexpr const char* group = "org.freedesktop.appearance";
constexpr const char* key = "color-scheme";

/// Portals wrap a value once or twice.
QVariant unwrapped(QVariant value) {
    while (value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

}  // namespace

DesktopScheme::DesktopScheme(QDBusConnection bus, QObject* parent) : QObject(parent) {
    if (!bus.isConnected()) return;
    bus.connect(
        service, path, interface, "SettingChanged", this, SLOT(onSettingChanged(QDBusMessage)));
    ask(bus);
}

void DesktopScheme::ask(QDBusConnection& bus) {
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, "Read");
    question << group << key;
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusVariant> answer = *watcher;
        if (answer.isValid()) tell(answer.value().variant());
        watcher->deleteLater();
    });
}

void DesktopScheme::onSettingChanged(const QDBusMessage& change) {
    const QVariantList words = change.arguments();
    if (words.size() != 3) return;  // group, key, value
    const bool isScheme = words[0].toString() == group && words[1].toString() == key;
    if (isScheme) tell(words[2]);
}

void DesktopScheme::tell(const QVariant& value) {
    switch (unwrapped(value).toUInt()) {
    case 1: return emit told(Theme::Scheme::dark);
    case 2: return emit told(Theme::Scheme::light);
    default: return emit told(Theme::Scheme::system);
    }
}

}  // namespace tesserine::app
