#include "app/state/AppEnvironment.h"

#include "app/look/Notice.h"
#include "app/state/SyncControl.h"
#include "base/Files.h"
#include "base/FirstWeekday.h"
#include "base/HTTPSession.h"
#include "base/Keychain.h"
#include "base/Memory.h"
#include "core/services/LibraryCare.h"
#include "search/LegacySavedSearches.h"
#include "search/SearchCoordinator.h"
#include "sync/SyncService.h"

#include <QPointer>
#include <QTimer>

#include <chrono>
#include <exception>
#include <utility>

namespace tesserine::app {
namespace {

using namespace std::chrono_literals;

/// How long another day or zone may go unnoticed. A timer until midnight would not count the time
/// that the machine sleeps.
constexpr auto calendarInterval = 30s;

/// Long work such as an import leaves room for short work.
constexpr int mostBackgroundThreads = 8;

/// Work in the background that ends within this time is tidied up after together.
constexpr auto memoryInterval = 1s;

/// The log is a help, not a condition: without a place to write it the program still works.
Log logTo(const std::filesystem::path& file) {
    if (file.empty()) return {};
    try {
        files::createPrivateFolder(file.parent_path());
        return Log(makeFileLogSink(file), "app.tesserine.desktop", "main");
    } catch (const std::exception&) {
        return {};
    }
}

/// What a failure says to the user.
std::string sentenceOf(const std::exception& error) {
    if (dynamic_cast<const UserError*>(&error) != nullptr) return error.what();
    return std::string("Something unexpected went wrong (") + error.what() + ").";
}

}  // namespace

AppEnvironment::AppEnvironment(AppSetting setting)
    : setting_(std::move(setting)),
      log_(logTo(setting_.logFile)),
      preferences_(setting_.preferencesFile),
      collator_(setting_.locale),
      calendar_(currentCalendar()),
      today_(calendar_.startOfDay(now())),
      notes_(clock()),
      notebooks_(clock()),
      tags_(clock()),
      savedSearches_(clock()),
      passages_(notes_, random()),
      tasks_(clock()),
      taskTemplates_(clock()),
      store_(
          {.directory = setting_.library},
          {.clock = clock(), .random = random(), .log = log_, .sqliteVFS = setting_.sqliteVFS}) {
    context().setObserver(
        [this](const std::vector<ObjectChange>& changes) { emit libraryChanged(changes); });
    background_.setMaxThreadCount(mostBackgroundThreads);
    returnLargeBlocksAtOnce();
    memoryTimer_.setSingleShot(true);
    connect(
        &memoryTimer_, &QTimer::timeout, this, [this] { background_.start(returnUnusedMemory); });
    connect(this, &AppEnvironment::searchIndexChanged, this, &AppEnvironment::returnMemorySoon);
    auto* timer = new QTimer(this);
    timer->setTimerType(Qt::VeryCoarseTimer);
    connect(timer, &QTimer::timeout, this, &AppEnvironment::refreshCalendar);
    timer->start(calendarInterval);
}

AppEnvironment::~AppEnvironment() {
    stop_.request_stop();
    if (syncControl_) syncControl_->stop();
    background_.waitForDone();
    context().setObserver({});
}

void AppEnvironment::startWork() {
    bringSearchesOver();
    QTimer::singleShot(setting_.patience, this, [this] { search().start(); });
    store_.startObserving([this](std::function<void()> task) {
        QMetaObject::invokeMethod(this, std::move(task), Qt::QueuedConnection);
    });
    syncControl().start();
    if (store_.wasCreated()) return;
    // Once the search has compared its index with the library, which takes well under a second.
    QTimer::singleShot(5 * setting_.patience, this, &AppEnvironment::careForLibrary);
}

void AppEnvironment::bringSearchesOver() {
    try {
        LegacySavedSearches legacy(savedSearches_, preferences_);
        if (legacy.isDue()) legacy.migrate(context());
    } catch (const UserError& error) {
        context().rollback();
        log_.warning(std::string("saved searches of earlier builds: ") + error.what());
    }
}

void AppEnvironment::careForLibrary() {
    inBackground(
        [this](StoreContext&, const std::stop_token& stop) {
            LibraryCare care(store_, clock(), random(), log_);
            care.makeDailyBackup();
            care.purgeTrash(preferences_, stop);
        },
        this);
}

const mime::TypeRegistry& AppEnvironment::types() {
    if (!types_) {
        types_ = std::make_unique<mime::TypeRegistry>(mime::TypeRegistry::find(setting_.dataDirs));
    }
    return *types_;
}

const AttachmentService& AppEnvironment::attachments() {
    if (!attachments_) attachments_ = std::make_unique<AttachmentService>(clock(), types());
    return *attachments_;
}

SearchCoordinator& AppEnvironment::search() {
    if (!search_) {
        search_ = std::make_unique<SearchCoordinator>(
            store_,
            SearchCoordinator::Setting{
                .clock = clock(), .log = log_, .vfs = setting_.sqliteVFS, .changed = [this] {
                    QMetaObject::invokeMethod(
                        this, &AppEnvironment::searchIndexChanged, Qt::QueuedConnection);
                }});
    }
    return *search_;
}

HTTPTransport& AppEnvironment::network() {
    if (setting_.network != nullptr) return *setting_.network;
    if (!network_) network_ = std::make_unique<HTTPSession>();
    return *network_;
}

SecretStore& AppEnvironment::secrets(std::string_view service) {
    if (setting_.secrets != nullptr) return *setting_.secrets;
    auto& keychain = keychains_[std::string(service)];
    if (!keychain) keychain = std::make_unique<Keychain>(std::string(service));
    return *keychain;
}

SyncControl& AppEnvironment::syncControl() {
    if (!syncControl_) syncControl_ = std::make_unique<SyncControl>(*this);
    return *syncControl_;
}

SyncService* AppEnvironment::sync() { return syncControl().service(); }

AccountSession* AppEnvironment::session() {
    SyncService* const service = sync();
    return service == nullptr ? nullptr : &service->account();
}

bool AppEnvironment::save(QWidget* parent) {
    try {
        context().save();
        return true;
    } catch (const StoreError& error) {
        log_.error(std::string("save: ") + error.what());
        showNotice(parent, error.what());
        return false;
    }
}

void AppEnvironment::inBackground(
    Work work,
    QObject* receiver,
    std::function<void()> done,
    std::function<void(const std::string& sentence)> failed) {
    // Made and asked on the main thread only.
    const auto whenStillThere = [this,
                                 there = QPointer<QObject>(receiver)](std::function<void()> call) {
        QMetaObject::invokeMethod(
            this,
            [there, call = std::move(call)] {
                if (there) call();
            },
            Qt::QueuedConnection);
    };
    background_.start([this,
                       work = std::move(work),
                       whenStillThere,
                       done = std::move(done),
                       failed = std::move(failed)] {
        try {
            const auto context = store_.newBackgroundContext();
            work(*context, stop_.get_token());
            if (done) whenStillThere(done);
        } catch (const std::exception& error) {
            const std::string sentence = sentenceOf(error);
            log_.warning("in the background: " + sentence);
            if (failed) whenStillThere([failed, sentence] { failed(sentence); });
        }
        QMetaObject::invokeMethod(this, &AppEnvironment::returnMemorySoon, Qt::QueuedConnection);
    });
}

/// Reading a whole library leaves much memory behind that nothing uses.
void AppEnvironment::returnMemorySoon() { memoryTimer_.start(memoryInterval); }

void AppEnvironment::waitForBackground() { background_.waitForDone(); }

Calendar AppEnvironment::currentCalendar() const {
    const std::string zone = setting_.zone.empty() ? Calendar::systemZone() : setting_.zone;
    return Calendar(
        zone, setting_.firstWeekday.value_or(firstWeekday(preferences_, setting_.locale)));
}

void AppEnvironment::refreshCalendar() {
    const Calendar present = currentCalendar();
    const Instant today = present.startOfDay(now());
    const bool isSame = present.zone() == calendar_.zone()
                        && present.firstWeekday() == calendar_.firstWeekday() && today == today_;
    if (isSame) return;
    calendar_ = present;
    today_ = today;
    emit calendarChanged();
}

}  // namespace tesserine::app
