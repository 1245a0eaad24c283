#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <map>
#include <string>
#include <vector>

class QDBusPendingCallWatcher;

namespace tesserine::app {

/// A notification of the desktop.
struct Notification {
    struct Action {
        std::string key;
        QString label;
    };

    std::string identifier;  ///< a later one of the same identifier takes its place
    QString title;
    QString body{};  ///< plain text
    std::vector<Action> actions{};
    QVariantMap information{};  ///< what else a listener may want to know, such as "taskID"
};

/// Shows notifications through `org.freedesktop.Notifications` and takes them back. Without a bus,
/// or with nobody on it who shows them, every one is `notShown`. Belongs to the main thread.
class Notifier final : public QObject {
    Q_OBJECT

public:
    /// What a click on the notification itself does, beside its actions.
    static constexpr const char* clicked = "default";

    explicit Notifier(QDBusConnection bus, QObject* parent = nullptr);

    /// Returns at once; what cannot be shown is told by `notShown`.
    void show(const Notification& notification);
    /// Takes it off the screen and out of the desktop's list.
    void withdraw(const std::string& identifier);

signals:
    void acted(const std::string& identifier, const std::string& action);
    void notShown(const tesserine::app::Notification& notification);
    /// Also of one that was not shown, for whoever showed it instead.
    void withdrawn(const std::string& identifier);

private slots:
    void onAction(uint id, const QString& key);
    void onClosed(uint id);

private:
    void finish(const Notification& notification, QDBusPendingCallWatcher& call);
    void close(uint id);
    std::string identifierOf(uint id) const;

    QDBusConnection bus_;
    std::map<std::string, uint> shown_;  // numbers of the desktop by our identifiers
    enum class Wait { toBeShown, withdrawn };
    std::map<std::string, Wait> waiting_;  // for their numbers
};

}  // namespace tesserine::app
