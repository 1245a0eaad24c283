#pragma once

#include "app/desktop/Request.h"

#include <QObject>

#include <memory>

class QAction;
class QMenu;
class QSystemTrayIcon;

namespace tesserine::app {

class AppEnvironment;

/// The mode in which the program lives in the desktop's tray: closing the window keeps it running,
/// and a menu offers quick add, a quick note, the tasks of today and the search.
///
/// Follows the preference. On a desktop without a tray the mode is not there, and closing the
/// window ends the program as usual. Belongs to the main thread.
class Tray final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Tray)

public:
    static constexpr const char* preferenceKey = "tesserine.menuBarOnly";
    /// As many tasks of today as the menu lists.
    static constexpr std::size_t mostTasks = 8;

    explicit Tray(AppEnvironment& environment, QObject* parent = nullptr);
    ~Tray() override;

    /// Whether this desktop has a tray.
    static bool isPossible();
    bool isOn() const { return icon_ != nullptr; }
    /// Takes over what the preference says.
    void refresh();
    /// The menu as it is shown now; also for desktops that show it elsewhere.
    QMenu& menu();

signals:
    void asked(const tesserine::app::Request& request);
    void quitAsked();

private:
    void fill();
    void addTasks();

    AppEnvironment& environment_;
    std::unique_ptr<QMenu> menu_;
    std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace tesserine::app
