#include "app/shell/Program.h"

#include "app/commands/Commands.h"
#include "app/desktop/DesktopScheme.h"
#include "app/desktop/SingleInstance.h"
#include "app/look/Icon.h"
#include "app/look/ModalFocus.h"
#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/look/ScreenFit.h"
#include "app/pages/GeneralSettings.h"
#include "app/pages/OnboardingPage.h"
#include "app/pages/SettingsPage.h"
#include "app/pages/WelcomeLibrary.h"
#include "app/shell/DesktopLink.h"
#include "app/shell/FirstPaint.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotificationLines.h"
#include "app/shell/Termination.h"
#include "app/shell/WindowCommands.h"
#include "app/shell/WindowRooms.h"
#include "app/state/SyncControl.h"
#include "base/FirstWeekday.h"
#include "base/UserError.h"
#include "core/store/LibraryFolder.h"
#include "core/store/LibraryUse.h"
#include "search/SearchCoordinator.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDialog>
#include <QDir>
#include <QPixmap>
#include <QStandardPaths>
#include <QTimer>
#include <QVBoxLayout>

#include <iostream>
#include <utility>

namespace tesserine::app {
namespace {

constexpr QSize pageSize(780, 600);
constexpr QSize settingsSize(820, 600);

/// What a picture waits for: counts and searches that are made in the background.
constexpr int pictureDelay = 700;  // milliseconds

constexpr const char* desktopSchemeKey = "tesserine.desktopScheme";

Theme::Scheme schemeIn(const Preferences& preferences, const std::string& key) {
    const auto word = preferences.string(key);
    if (word == "light") return Theme::Scheme::light;
    if (word == "dark") return Theme::Scheme::dark;
    return Theme::Scheme::system;
}

/// Of every window. Drawing it in all sizes would hold up the first one.
void showProgramIcon() { QApplication::setWindowIcon(programIcon()); }

/// Private to the user; empty where there is none.
QString runtimeFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

void rememberDesktopScheme(AppEnvironment& environment, Theme::Scheme scheme) {
    if (scheme == schemeIn(environment.preferences(), desktopSchemeKey)) return;
    const bool isDark = scheme == Theme::Scheme::dark;
    const char* word = isDark ? "dark" : scheme == Theme::Scheme::light ? "light" : "";
    try {
        environment.preferences().set(desktopSchemeKey, word);
    } catch (const UserError& error) {
        environment.log().warning(std::string("the desktop's scheme: ") + error.what());
    }
}

/// Also where its file is missing: that is a failure to tell of, not a beginning.
bool isLibrary(const std::filesystem::path& folder) {
    std::error_code error;
    return std::filesystem::exists(folder / TesserineStore::fileName, error)
           || LibraryUse::isKnown(folder);
}

}  // namespace

Program::Program(Theme& theme, StartOptions options) : theme_(theme), options_(std::move(options)) {
    if (isOnlyPicture()) return;
    screenFit_ = std::make_unique<ScreenFit>(*qApp);
    modalFocus_ = std::make_unique<ModalFocus>(*qApp);
    termination_ = std::make_unique<Termination>();
    connect(termination_.get(), &Termination::asked, this, [this] {
        if (window_) window_->close();  // saves what is being typed
        QApplication::quit();
    });
}

Program::~Program() = default;

int Program::run() {
    try {
        const AppSetting setting = process_.setting(options_.library);
        if (handOver(setting)) return 0;
        isLibrary(setting.library) ? open(setting) : showOnboarding(setting.library);
    } catch (const LibraryFolderError& error) {
        showLoadFailure({options_.library.value_or(""), QString::fromUtf8(error.what())});
    }
    return QApplication::exec();
}

/// Whether another window took over: the one of this library, or the one that waits for the
/// browser.
bool Program::handOver(const AppSetting& setting) {
    const QString folder = runtimeFolder();
    if (isOnlyPicture() || folder.isEmpty()) return false;
    QStringList requests;
    bool isSignIn = false;
    for (const QString& argument : options_.requests) {
        const auto request = Request::fromArgument(argument, QDir::currentPath());
        requests << (request ? request->argument() : argument);
        isSignIn = isSignIn || (request && request->kind == Request::Kind::signedIn);
    }
    if (isSignIn) {
        const SingleInstance post(SingleInstance::Post::signIn, folder);
        if (!post.isFirst() && post.handOver(requests)) return true;
    }
    instance_ = std::make_unique<SingleInstance>(setting.library, folder);
    if (!instance_->isFirst()) return instance_->handOver(requests);
    connect(instance_.get(), &SingleInstance::asked, this, &Program::handleArguments);
    return false;
}

/// The desktop does not know which library the browser was opened for.
void Program::followSignIn() {
    if (!environment_->syncControl().isSigningIn()) return signInPost_.reset();
    const QString folder = runtimeFolder();
    if (signInPost_ || folder.isEmpty()) return;
    signInPost_ = std::make_unique<SingleInstance>(SingleInstance::Post::signIn, folder);
    connect(signInPost_.get(), &SingleInstance::asked, this, &Program::handleArguments);
}

/// A library that cannot be opened is never replaced by an empty one.
void Program::open(const AppSetting& setting) {
    try {
        environment_ = std::make_unique<AppEnvironment>(setting);
        beginLibrary();
        showWindow();
    } catch (const StoreError& error) {
        environment_.reset();
        showLoadFailure({setting.library, QString::fromUtf8(error.what()), setting});
    }
}

void Program::showOnboarding(const std::filesystem::path& folder) {
    auto page = std::make_unique<OnboardingPage>(folder);
    connect(page.get(), &OnboardingPage::freshStartChosen, this, [this](const QString& chosen) {
        openChosen(chosen, Beginning::welcome);
    });
    connect(page.get(), &OnboardingPage::importChosen, this, [this](const QString& chosen) {
        openChosen(chosen, Beginning::import);
    });
    connect(page.get(), &OnboardingPage::libraryChosen, this, [this](const QString& chosen) {
        openChosen(chosen, Beginning::none);
    });
    connect(page.get(), &OnboardingPage::signInChosen, this, [this](const QString& chosen) {
        openChosen(chosen, Beginning::signIn);
    });
    showPage(std::move(page));
}

void Program::showLoadFailure(LoadFailedPage::Failure failure) {
    auto page = std::make_unique<LoadFailedPage>(failure);
    connect(page.get(), &LoadFailedPage::restored, this, [this, setting = failure.setting] {
        beginning_ = Beginning::none;
        // The page tells from within one of its own signals.
        QTimer::singleShot(0, this, [this, setting] { open(*setting); });
    });
    connect(page.get(), &LoadFailedPage::folderChosen, this, [this](const QString& chosen) {
        openChosen(chosen, Beginning::none);
    });
    connect(page.get(), &LoadFailedPage::quitAsked, this, &QApplication::quit);
    showPage(std::move(page));
}

void Program::openChosen(const QString& folder, Beginning beginning) {
    beginning_ = beginning;
    // The page asks from within one of its own signals.
    QTimer::singleShot(0, this, [this, chosen = folder.toStdString()] {
        try {
            const AppSetting setting = process_.setting(chosen);
            const bool isThere = isLibrary(setting.library);
            if (!isThere && beginning_ == Beginning::none) return showOnboarding(setting.library);
            if (isThere && beginning_ == Beginning::welcome) beginning_ = Beginning::none;
            instance_.reset();  // of the folder before
            if (handOver(setting)) return QApplication::quit();
            Preferences(setting.preferencesFile).set(libraryFolderKey, setting.library.string());
            open(setting);
        } catch (const UserError& error) {
            showNotice(page_.get(), error.what());
        }
    });
}

void Program::showPage(std::unique_ptr<QWidget> page) {
    page_ = std::move(page);
    page_->setWindowTitle("Tesserine");
    options_.size ? page_->resize(*options_.size) : resizeToFit(*page_, pageSize);
    showProgramIcon();
    page_->show();
    if (isOnlyPicture()) QTimer::singleShot(pictureDelay, this, [this] { takePicture(*page_); });
    QTimer::singleShot(0, this, &Program::followDesktop);
}

// The window

void Program::beginLibrary() {
    if (beginning_ == Beginning::welcome) welcome::seed(*environment_);
    if (beginning_ == Beginning::import) welcome::seedTemplates(*environment_);
}

/// Light or dark as the desktop has it. What it said last is remembered, because its answer comes
/// after the first paint.
void Program::followDesktop() {
    if (desktopScheme_ || isOnlyPicture()) return;
    desktopScheme_ = std::make_unique<DesktopScheme>(QDBusConnection::sessionBus());
    connect(desktopScheme_.get(), &DesktopScheme::told, this, [this](Theme::Scheme scheme) {
        theme_.setDesktopScheme(scheme);
        if (environment_) rememberDesktopScheme(*environment_, scheme);
    });
}

void Program::showWindow() {
    const Preferences& preferences = environment_->preferences();
    if (options_.scheme == Theme::Scheme::system) {
        theme_.setScheme(schemeIn(preferences, GeneralSettings::appearanceKey));
    }
    if (!desktopScheme_ && !isOnlyPicture()) {
        theme_.setDesktopScheme(schemeIn(preferences, desktopSchemeKey));
    }
    commands_ = std::make_unique<Commands>(environment_->preferences());
    window_ = std::make_unique<MainWindow>(*environment_, *commands_);
    handleWindowCommands(*window_, *commands_, *environment_);
    connect(window_.get(), &MainWindow::settingsWanted, this, &Program::showSettings);
    connect(window_.get(), &MainWindow::welcomeWanted, this, [this] {
        window_->go({Place::Kind::note, welcome::note(*environment_)});
    });
    if (options_.size) window_->resize(*options_.size);
    afterFirstPaint(*window_, [this] { beginWork(); });
    window_->show();
    page_.reset();
}

/// What waits until the user sees the window.
void Program::beginWork() {
    showProgramIcon();
    environment_->startWork();
    addRooms(*window_, *commands_, *environment_);
    const auto place =
        options_.open ? Place::fromAddress(options_.open->toStdString()) : std::nullopt;
    // A picture of results is not taken before there are some.
    if (isOnlyPicture() && place && place->kind == Place::Kind::search) {
        environment_->search().catchUp();
    }
    if (place) window_->go(*place);
    if (beginning_ == Beginning::welcome) emit window_->welcomeWanted();
    if (beginning_ == Beginning::import) commands_->trigger("library.import");
    if (beginning_ == Beginning::signIn) showSettings("sync");
    if (isOnlyPicture()) {
        QTimer::singleShot(pictureDelay, this, [this] { takePicture(*window_); });
        return;
    }
    connect(&environment_->syncControl(), &SyncControl::changed, this, &Program::followSignIn);
    followDesktop();
    rememberDesktopScheme(*environment_, theme_.desktopScheme());
    desktop_ = std::make_unique<DesktopLink>(*environment_);
    connect(desktop_.get(), &DesktopLink::asked, this, &Program::handle);
    auto* lines = new NotificationLines(window_.get());
    window_->setNoticeLine(lines);
    connect(desktop_.get(), &DesktopLink::notShown, lines, &NotificationLines::show);
    connect(desktop_.get(), &DesktopLink::withdrawn, lines, &NotificationLines::withdraw);
    connect(lines, &NotificationLines::acted, desktop_.get(), &DesktopLink::act);
    connect(desktop_.get(), &DesktopLink::quitAsked, this, [this] {
        if (window_->close()) QApplication::quit();
    });
    if (!options_.requests.isEmpty()) handleArguments(options_.requests);
}

void Program::showSettings(const QString& area) {
    auto* dialog = window_->findChild<QDialog*>("settings");
    if (dialog == nullptr) dialog = makeSettings();
    dialog->findChild<SettingsPage*>()->showPage(area);
    dialog->show();
    dialog->activateWindow();
}

QDialog* Program::makeSettings() {
    auto* dialog = new QDialog(window_.get());
    dialog->setObjectName("settings");
    dialog->setWindowTitle("Settings");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto* page = new SettingsPage(*environment_, dialog);
    addRoomSettings(*page, *environment_);
    auto* column = new QVBoxLayout(dialog);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(page);
    connect(page, &SettingsPage::changed, this, &Program::followSetting);
    connect(page, &SettingsPage::keysAsked, this, [this] { commands_->trigger("help.keys"); });
    connect(
        page, &SettingsPage::importAsked, this, [this] { commands_->trigger("library.import"); });
    connect(
        page, &SettingsPage::exportAsked, this, [this] { commands_->trigger("library.export"); });
    dialog->resize(settingsSize);
    return dialog;
}

/// Settings take effect at once.
void Program::followSetting(const QString& key) {
    const std::string changed = key.toStdString();
    if (changed == GeneralSettings::appearanceKey) {
        theme_.setScheme(schemeIn(environment_->preferences(), changed));
    }
    if (changed == firstWeekdayKey) environment_->refreshCalendar();
    if (changed == Tray::preferenceKey && desktop_) desktop_->refreshTray();
}

void Program::tellFailure(const QString& sentence) {
    if (!environment_) return;
    environment_->log().error(sentence.toStdString());
    showNotice(window_.get(), sentence.toStdString());
}

// What is asked from outside

void Program::handleArguments(const QStringList& arguments) {
    if (arguments.isEmpty()) return handle({});
    QStringList files;  // one import takes them all
    for (const QString& argument : arguments) {
        const auto request = Request::fromArgument(argument, QDir::currentPath());
        if (request && request->kind == Request::Kind::openFile) {
            files << request->text;
        } else if (request) {
            handle(*request);
        } else if (window_) {
            showNotice(
                window_.get(),
                "“" + argument.toStdString()
                    + "” is neither a file nor an address that Tesserine knows.");
        }
    }
    if (files.isEmpty() || !window_) return;
    window_->present();
    emit window_->importWanted(files);
}

void Program::handle(const Request& request) {
    if (!window_) return;
    window_->present();
    switch (request.kind) {
    case Request::Kind::activate: return;
    case Request::Kind::newNote: return window_->newNote();
    case Request::Kind::newTask: return window_->newTask(request.text);
    case Request::Kind::go: return window_->go(request.place);
    case Request::Kind::signedIn:
        return environment_->syncControl().takeCallback(request.text.toStdString());
    case Request::Kind::openFile: return emit window_->importWanted({request.text});
    }
}

void Program::takePicture(QWidget& widget) {
    if (environment_) environment_->waitForBackground();
    QApplication::processEvents();
    // The settings stand over the window.
    auto* dialog = widget.findChild<QDialog*>();
    QWidget& shown = dialog != nullptr && dialog->isVisible() ? *dialog : widget;
    const bool isWritten = shown.grab().save(*options_.screenshot);
    if (!isWritten) {
        std::cerr << "The picture could not be written to " << options_.screenshot->toStdString()
                  << '\n';
    }
    QApplication::exit(isWritten ? 0 : 1);
}

}  // namespace tesserine::app
