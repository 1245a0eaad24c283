#pragma once

#include <QWidget>

class QListWidget;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;
class SettingsForm;

/// All settings by areas. Everything takes effect at once: what the page cannot do itself is told
/// by `changed` and the asked-for signals. Shows the values of the moment it was made.
class SettingsPage final : public QWidget {
    Q_OBJECT

public:
    enum class Area { general, search, storage, exchange };

    explicit SettingsPage(AppEnvironment& environment, QWidget* parent = nullptr);

    void show(Area area);

signals:
    /// A preference was changed: appearance, tray, first day of the week and so on.
    void changed(const QString& key);
    void keysAsked();
    void importAsked();
    void exportAsked();

private:
    void add(const QString& icon, const QString& title, SettingsForm* form);

    QListWidget* const areas_;
    QStackedWidget* const pages_;
};

}  // namespace tesserine::app
