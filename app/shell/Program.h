#pragma once

#include "app/desktop/Request.h"
#include "app/shell/ProcessSetting.h"
#include "app/shell/StartOptions.h"

#include <QObject>

#include <memory>

namespace tesserine::app {

class BusService;
class Commands;
class MainWindow;
class Notifier;
class Reminders;
class SingleInstance;
class Tray;

/// One run of the program: the library, its window, and what the desktop asks of them.
class Program final : public QObject {
    Q_OBJECT

public:
    Program(Theme& theme, StartOptions options);
    ~Program() override;

    /// Runs until the window is closed; returns the status of the process. A program that is the
    /// second one for its library hands over what it was asked, and ends.
    int run();

private:
    bool isOnlyPicture() const { return options_.screenshot.has_value(); }
    bool handOver(const AppSetting& setting);
    void openLibrary(const AppSetting& setting);
    void showLoadFailure(const std::filesystem::path& folder, const QString& sentence);
    void showWindow();
    void begin();
    void joinDesktop();
    void handle(const Request& request);
    void handleArguments(const QStringList& arguments);
    void takePicture();

    Theme& theme_;
    const StartOptions options_;
    const ProcessSetting process_;

    std::unique_ptr<SingleInstance> instance_;
    std::unique_ptr<AppEnvironment> environment_;
    std::unique_ptr<Commands> commands_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<Notifier> notifier_;
    std::unique_ptr<Reminders> reminders_;
    std::unique_ptr<BusService> bus_;
    std::unique_ptr<Tray> tray_;
};

}  // namespace tesserine::app
