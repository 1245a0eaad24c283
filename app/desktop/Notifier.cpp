#include "app/desktop/Notifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr const char* notificationsService = "org.freedesktop.Notifications";
constexpr const char* notificationsPath = "/org/freedesktop/Notifications";
constexpr const char* notificationsInterface = "org.freedesktop.Notifications";
constexpr int asTheDesktopLikes = -1;  // how long it is shown

QDBusMessage call(const char* method) {
    return QDBusMessage::createMethodCall(
        notificationsService, notificationsPath, notificationsInterface, method);
}

QStringList actionsOf(const Notification& notification) {
    QStringList pairs{Notifier::clicked, QString()};
    for (const Notification::Action& action : notification.actions) {
        pairs << QString::fromStdString(action.key) << action.label;
    }
    return pairs;
}

}  // namespace

Notifier::Notifier(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus)) {
    if (!bus_.isConnected()) return;
    bus_.connect(
        notificationsService,
        notificationsPath,
        notificationsInterface,
        "ActionInvoked",
        this,
        SLOT(onAction(uint, QString)));
    bus_.connect(
        notificationsService,
        notificationsPath,
        notificationsInterface,
        "NotificationClosed",
        this,
        SLOT(onClosed(uint)));
}

void Notifier::show(const Notification& notification) {
    if (!bus_.isConnected()) {
        QMetaObject::invokeMethod(
            this, [this, notification] { emit notShown(notification); }, Qt::QueuedConnection);
        return;
    }
    waiting_[notification.identifier] = Wait::toBeShown;
    const auto shown = shown_.find(notification.identifier);
    QVariantMap hints = notification.information;
    hints["desktop-entry"] = "app.tesserine.Tesserine";

    QDBusMessage message = call("Notify");
    message << "Tesserine" << (shown == shown_.end() ? 0U : shown->second)
            << "app.tesserine.Tesserine" << notification.title
            << notification.body.toHtmlEscaped()  // desktops read it as markup
            << actionsOf(notification) << hints << asTheDesktopLikes;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [=, this] {
        finish(notification, *watcher);
        watcher->deleteLater();
    });
}

void Notifier::finish(const Notification& notification, QDBusPendingCallWatcher& call) {
    const QDBusPendingReply<uint> reply = call;
    const auto waited = waiting_.extract(notification.identifier);
    const bool isWithdrawn = waited && waited.mapped() == Wait::withdrawn;
    if (reply.isError()) {
        if (!isWithdrawn) emit notShown(notification);
    } else if (isWithdrawn) {
        close(reply.value());
    } else {
        shown_[notification.identifier] = reply.value();
    }
}

void Notifier::withdraw(const std::string& identifier) {
    emit withdrawn(identifier);
    const auto waiting = waiting_.find(identifier);
    if (waiting != waiting_.end()) waiting->second = Wait::withdrawn;
    const auto shown = shown_.find(identifier);
    if (shown == shown_.end()) return;
    close(shown->second);
    shown_.erase(shown);
}

void Notifier::close(uint id) {
    QDBusMessage message = call("CloseNotification");
    message << id;
    bus_.asyncCall(message);
}

std::string Notifier::identifierOf(uint id) const {
    const auto shown =
        std::ranges::find_if(shown_, [id](const auto& one) { return one.second == id; });
    return shown == shown_.end() ? std::string() : shown->first;
}

void Notifier::onAction(uint id, const QString& key) {
    const std::string identifier = identifierOf(id);
    if (!identifier.empty()) emit acted(identifier, key.toStdString());
}

void Notifier::onClosed(uint id) { shown_.erase(identifierOf(id)); }

}  // namespace tesserine::app
