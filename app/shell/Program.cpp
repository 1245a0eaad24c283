#include "app/shell/Program.h"

#include "app/commands/Commands.h"
#include "app/desktop/BusService.h"
#include "app/desktop/Notifier.h"
#include "app/desktop/Reminders.h"
#include "app/desktop/SingleInstance.h"
#include "app/desktop/Tray.h"
#include "app/shell/FirstPaint.h"
#include "app/shell/MainWindow.h"
#include "app/shell/WindowCommands.h"
#include "base/UserError.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDir>
#include <QPixmap>
#include <QStandardPaths>
#include <QTimer>

#include <iostream>
#include <utility>

namespace tesserine::app {
namespace {

/// What a picture waits for: counts and searches that are made in the background.
constexpr int pictureDelay = 700;  // milliseconds

}  // namespace

Program::Program(Theme& theme, StartOptions options)
    : theme_(theme), options_(std::move(options)) {}

Program::~Program() = default;

int Program::run() {
    try {
        const AppSetting setting = process_.setting(options_.library);
        if (handOver(setting)) return 0;
        openLibrary(setting);
    } catch (const UserError& error) {
        showLoadFailure(options_.library.value_or(""), QString::fromUtf8(error.what()));
    }
    return QApplication::exec();
}

/// Whether another window of this library took over.
bool Program::handOver(const AppSetting& setting) {
    if (isOnlyPicture()) return false;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty()) return false;
    instance_ = std::make_unique<SingleInstance>(setting.library, folder);
    if (!instance_->isFirst()) {
        QStringList requests;
        for (const QString& argument : options_.requests) {
            const auto request = Request::fromArgument(argument, QDir::currentPath());
            requests << (request ? request->argument() : argument);
        }
        return instance_->handOver(requests);
    }
    connect(instance_.get(), &SingleInstance::asked, this, &Program::handleArguments);
    return false;
}

void Program::openLibrary(const AppSetting& setting) {
    environment_ = std::make_unique<AppEnvironment>(setting);
    showWindow();
}

void Program::showLoadFailure(const std::filesystem::path& folder, const QString& sentence) {
    std::cerr << folder.string() << ": " << sentence.toStdString() << '\n';
}

void Program::showWindow() {
    commands_ = std::make_unique<Commands>(environment_->preferences());
    window_ = std::make_unique<MainWindow>(*environment_, *commands_);
    handleWindowCommands(*window_, *commands_, *environment_);
    if (options_.size) window_->resize(*options_.size);
    afterFirstPaint(*window_, [this] { begin(); });
    window_->show();
}

/// What waits until the user sees the window.
void Program::begin() {
    environment_->startWork();
    if (options_.open) {
        if (const auto place = Place::fromAddress(options_.open->toStdString())) {
            window_->go(*place);
        }
    }
    if (isOnlyPicture()) {
        QTimer::singleShot(pictureDelay, this, &Program::takePicture);
        return;
    }
    joinDesktop();
    if (!options_.requests.isEmpty()) handleArguments(options_.requests);
}

void Program::joinDesktop() {
    const auto bus = QDBusConnection::sessionBus();
    notifier_ = std::make_unique<Notifier>(bus);
    reminders_ = std::make_unique<Reminders>(*environment_, *notifier_);
    bus_ = std::make_unique<BusService>(*environment_, bus);
    tray_ = std::make_unique<Tray>(*environment_);
    connect(bus_.get(), &BusService::asked, this, &Program::handle);
    connect(tray_.get(), &Tray::asked, this, &Program::handle);
    connect(tray_.get(), &Tray::quitAsked, this, [this] {
        if (window_->save()) QApplication::quit();
    });
    connect(reminders_.get(), &Reminders::chosen, this, [this](const Place& place) {
        handle({.kind = Request::Kind::go, .place = place});
    });
    tray_->refresh();
    QApplication::setQuitOnLastWindowClosed(!tray_->isOn());
    reminders_->start();
}

void Program::handleArguments(const QStringList& arguments) {
    if (arguments.isEmpty()) return handle({});
    for (const QString& argument : arguments) {
        if (const auto request = Request::fromArgument(argument, QDir::currentPath())) {
            handle(*request);
        }
    }
}

void Program::handle(const Request& request) {
    if (!window_) return;
    window_->present();
    switch (request.kind) {
    case Request::Kind::activate: return;
    case Request::Kind::newNote: return window_->newNote();
    case Request::Kind::newTask: return window_->newTask(request.text);
    case Request::Kind::go: return window_->go(request.place);
    case Request::Kind::openFile: return;
    }
}

void Program::takePicture() {
    environment_->waitForBackground();
    QApplication::processEvents();
    const bool isWritten = window_->grab().save(*options_.screenshot);
    if (!isWritten) {
        std::cerr << "The picture could not be written to " << options_.screenshot->toStdString()
                  << '\n';
    }
    QApplication::exit(isWritten ? 0 : 1);
}

}  // namespace tesserine::app
