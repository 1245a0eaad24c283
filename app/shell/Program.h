#pragma once

#include "app/desktop/Request.h"
#include "app/pages/LoadFailedPage.h"
#include "app/shell/ProcessSetting.h"
#include "app/shell/StartOptions.h"

#include <QObject>

#include <memory>
#include <optional>

class QDialog;
class QWidget;

namespace tesserine::app {

class Commands;
class DesktopLink;
class DesktopScheme;
class MainWindow;
class ModalFocus;
class ScreenFit;
class SingleInstance;
class Termination;

/// One run of the program: the library, its window, and what the desktop asks of them.
class Program final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Program)

public:
    Program(Theme& theme, StartOptions options);
    ~Program() override;

    /// Runs until the window is closed; returns the status of the process. A program that is the
    /// second one for its library hands over what it was asked, and ends.
    int run();
    /// Of something that nobody expected; the program goes on.
    void tellFailure(const QString& sentence);

private:
    /// What a library begins with when it is made.
    enum class Beginning { none, welcome, import, signIn };

    bool isOnlyPicture() const { return options_.screenshot.has_value(); }
    bool handOver(const AppSetting& setting);
    void followSignIn();
    void open(const AppSetting& setting);
    void showOnboarding(const std::filesystem::path& folder);
    void showLoadFailure(LoadFailedPage::Failure failure);
    void openChosen(const QString& folder, Beginning beginning);
    void showPage(std::unique_ptr<QWidget> page);

    void followDesktop();
    void showWindow();
    void beginWork();
    void beginLibrary();
    void showSettings(const QString& area);
    QDialog* makeSettings();
    void followSetting(const QString& key);
    void handle(const Request& request);
    void handleArguments(const QStringList& arguments);
    void takePicture(QWidget& widget);

    Theme& theme_;
    const StartOptions options_;
    const ProcessSetting process_;
    std::unique_ptr<ScreenFit> screenFit_;
    std::unique_ptr<ModalFocus> modalFocus_;
    std::unique_ptr<Termination> termination_;

    std::unique_ptr<SingleInstance> instance_;
    std::unique_ptr<SingleInstance> signInPost_;  // while a sign-in waits for the browser
    std::unique_ptr<QWidget> page_;               // in the window's place while there is no library
    Beginning beginning_ = Beginning::none;
    std::unique_ptr<AppEnvironment> environment_;
    std::unique_ptr<Commands> commands_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<DesktopLink> desktop_;
    std::unique_ptr<DesktopScheme> desktopScheme_;
};

}  // namespace tesserine::app
