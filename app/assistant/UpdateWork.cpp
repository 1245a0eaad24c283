#include "app/assistant/UpdateWork.h"

#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "app/state/AppEnvironment.h"
#include "base/Product.h"
#include "base/UserError.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUrl>

#include <memory>
#include <utility>

namespace tesserine::app {
namespace {

constexpr const char* nowhere =
    "This build of Tesserine has no service of its own, so there is nowhere to look for updates.";

}  // namespace

UpdateWork::UpdateWork(AppEnvironment& environment, UpdateSource source, QObject* parent)
    : QObject(parent), environment_(environment), source_(std::move(source)), job_(environment) {
    connect(&job_, &Job::failed, this, &UpdateWork::fail);
    connect(&job_, &Job::progressed, this, [this](std::size_t done, std::size_t) {
        received_ = static_cast<std::int64_t>(done);
        if (state_ == State::downloading) emit changed();
    });
}

bool UpdateWork::canDownload() const {
    return offer_ && offer_->release.download && !source_.isOwnedByPackages();
}

QString UpdateWork::sentence() const {
    if (!failure_.isEmpty()) return failure_;
    switch (state_) {
    case State::idle: return {};
    case State::checking: return "Looking for a newer version…";
    case State::newest: return "Tesserine " + qt(product::version) + " is the newest version.";
    case State::offered:
        return "Tesserine " + shownText(offer_->release.stamp.version.text)
               + " is available; this is " + qt(product::version) + ".";
    case State::downloading:
        return "Downloading Tesserine " + shownText(offer_->release.stamp.version.text) + "…";
    case State::downloaded:
        return "Downloaded and checked “" + qt(file_.filename().string()) + "”. Nothing was run.";
    }
    return {};
}

void UpdateWork::check() {
    if (isRunning()) return;
    if (!source_.hasService) return fail(nowhere);
    become(State::checking);
    const auto found = std::make_shared<std::optional<UpdateOffer>>();
    HTTPTransport& network = environment_.network();
    job_.start(
        [found, &network, source = source_, &environment = environment_](const Job::Given& given) {
            Preferences& preferences = environment.preferences();
            Release release = source.client(network).fetch(given.stop);
            *found = offerOf(std::move(release), updates::situation(preferences));
            updates::noteCheck(preferences, environment.now(), *found);
        },
        [this, found] {
            offer_ = *found;
            become(offer_ ? State::offered : State::newest);
        });
}

void UpdateWork::download(const std::filesystem::path& folder) {
    if (isRunning() || !canDownload()) return;
    received_ = 0;
    become(State::downloading);
    const auto file = std::make_shared<std::filesystem::path>();
    HTTPTransport& network = environment_.network();
    job_.start(
        [file, folder, &network, source = source_, announced = *offer_->release.download](
            const Job::Given& given) {
            const auto length = static_cast<std::size_t>(announced.length);
            *file = source.client(network).download(
                announced,
                folder,
                [&](std::int64_t received) {
                    given.progress(static_cast<std::size_t>(received), length);
                },
                given.stop);
        },
        [this, file] {
            file_ = *file;
            become(State::downloaded);
        });
}

void UpdateWork::skip() {
    if (!offer_ || offer_->isRequired) return;
    try {
        updates::skip(environment_.preferences(), offer_->release);
        offer_.reset();
        become(State::idle);
    } catch (const UserError& error) {
        fail(error.what());
    }
}

void UpdateWork::become(State state) {
    failure_.clear();
    state_ = state;
    emit changed();
}

void UpdateWork::fail(const QString& sentence) {
    state_ = offer_ ? State::offered : State::idle;
    failure_ = sentence;
    emit changed();
}

QString shownText(const std::string& fromFeed) {
    QString text = QString::fromStdString(fromFeed);
    return text.removeIf([](QChar unit) {
        const char16_t code = unit.unicode();
        const bool turns = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
        return turns || unit.category() == QChar::Other_Control;
    });
}

UpdateSource updateSourceOfThisProgram() {
    return UpdateSource::ofThisBuild(QCoreApplication::applicationFilePath().toStdString());
}

void showInFolder(const std::filesystem::path& file) {
    const QString folder = QString::fromStdString(file.parent_path().string());
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.FileManager1",
        "/org/freedesktop/FileManager1",
        "org.freedesktop.FileManager1",
        "ShowItems");
    const QString address = QUrl::fromLocalFile(QString::fromStdString(file.string())).toString();
    call << QStringList{address} << QString();
    const auto pending = QDBusConnection::sessionBus().asyncCall(call);
    auto* const watcher = new QDBusPendingCallWatcher(pending, QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, folder] {
        if (watcher->isError()) showFolder(folder);
        watcher->deleteLater();
    });
}

}  // namespace tesserine::app
