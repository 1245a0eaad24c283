#pragma once

#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QListWidget;
class QStackedWidget;

namespace tesserine::app {

class AppEnvironment;

/// All settings by areas. Everything takes effect at once: what the page cannot do itself is told
/// by `changed` and the asked-for signals. An area is made when it is first shown, and shows the
/// values of that moment.
class SettingsPage final : public QWidget {
    Q_OBJECT

public:
    explicit SettingsPage(AppEnvironment& environment, QWidget* parent = nullptr);

    /// Adds an area that another room makes. Areas stand in one order, whoever adds them first:
    /// "general", "editor", "search", "storage", "sync", "assistant", "exchange", "updates"; any
    /// other one follows these.
    using Make = std::function<QWidget*(QWidget* parent)>;
    void addPage(const QString& id, const QString& title, const QString& icon, Make make);

    /// Shows an area; one that is not there leaves the page as it is.
    void showPage(const QString& id);

signals:
    /// A preference was changed: appearance, tray, first day of the week and so on.
    void changed(const QString& key);
    void keysAsked();
    void importAsked();
    void exportAsked();

private:
    struct Area {
        QString id;
        Make make;
        QWidget* shown = nullptr;
    };
    void addOwnPages(AppEnvironment& environment);
    void showArea(int row);

    QListWidget* const list_;
    QStackedWidget* const pages_;
    std::vector<Area> areas_;  // as they stand in the list
};

}  // namespace tesserine::app
