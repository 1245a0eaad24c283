#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/Preferences.h"
#include "base/Random.h"
#include "base/Text.h"
#include "base/WebSocket.h"
#include "core/services/AttachmentService.h"
#include "core/services/MIMEType.h"
#include "core/services/NotebookService.h"
#include "core/services/NoteService.h"
#include "core/services/PassageService.h"
#include "core/services/SavedSearchService.h"
#include "core/services/TagService.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "core/tasks/ProjectService.h"
#include "core/tasks/QuickAddParser.h"
#include "core/tasks/TaskService.h"
#include "core/tasks/TaskTemplateService.h"

#include <QObject>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

class QWidget;

namespace tesserine {
class AccountSession;
class HTTPTransport;
class SearchCoordinator;
class SecretStore;
class SyncService;
}  // namespace tesserine

namespace tesserine::app {

class SyncControl;

/// What makes one run of the window differ from another; main.cpp fills it from its process, tests
/// by hand. What it refers to outlives the environment.
struct AppSetting {
    const Clock& clock;
    Random& random;
    std::string zone{};  ///< an IANA name; empty: that of the machine, followed when it changes
    std::string locale{};
    std::optional<int> firstWeekday{};  ///< 1 = Sunday; none: what the user set, else the locale's
    std::filesystem::path library{};
    std::filesystem::path preferencesFile{};
    std::filesystem::path logFile{};  ///< empty: no log
    std::filesystem::path dataFolder{};
    std::filesystem::path cacheFolder{};
    std::string dataDirs{};   ///< where the registry of file types is looked for
    std::string sqliteVFS{};  ///< empty: the default one
    /// How long work that nobody waits for leaves the first window alone.
    std::chrono::milliseconds patience{1000};
    /// The service to sync with; none: what the user set, else that of the build.
    std::optional<std::string> serviceURL{};
    /// How often sync looks for changes of other devices.
    std::chrono::milliseconds syncInterval = std::chrono::minutes(5);
    const Clock* realClock = nullptr;  ///< for waits and tokens, in place of the machine's
    HTTPTransport* network = nullptr;  ///< in place of the real one
    WebSocketListening socket = listenToWebSocket;  ///< for news from the service
    SecretStore* secrets = nullptr;                 ///< in place of the user's keyring
};

/// The open library and everything that works on it, for all widgets of the window.
///
/// Belongs to the main thread. Outlives every widget that was given it.
class AppEnvironment final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AppEnvironment)

public:
    /// Opens the library, or makes one where there is none. Throws `StoreError::loadFailed`.
    explicit AppEnvironment(AppSetting setting);
    ~AppEnvironment() override;

    /// What is done at every start, once the first window is painted: brings over saved searches of
    /// earlier builds, starts the search, follows other processes, begins to sync where that is
    /// set up, makes the daily backup and purges the trash. Failures are logged.
    void startWork();

    TesserineStore& store() { return store_; }
    /// The main context, for the main thread.
    StoreContext& context() { return store_.viewContext(); }
    const AppSetting& setting() const { return setting_; }
    const Clock& clock() const { return setting_.clock; }
    Random& random() const { return setting_.random; }
    Instant now() const { return setting_.clock.now(); }
    /// Replaced when `calendarChanged` is sent; copies are cheap.
    const Calendar& calendar() const { return calendar_; }
    const text::Collator& collator() const { return collator_; }
    Preferences& preferences() { return preferences_; }
    const Log& log() const { return log_; }

    const NoteService& notes() const { return notes_; }
    const NotebookService& notebooks() const { return notebooks_; }
    const TagService& tags() const { return tags_; }
    const SavedSearchService& savedSearches() const { return savedSearches_; }
    const PassageService& passages() const { return passages_; }
    const TaskService& tasks() const { return tasks_; }
    const ProjectService& projects() const { return tasks_.projects(); }
    const TaskTemplateService& taskTemplates() const { return taskTemplates_; }
    /// Reads the registry of file types the first time.
    const mime::TypeRegistry& types();
    const AttachmentService& attachments();
    /// For sentences that are typed now.
    QuickAddParser quickAddParser() const { return {now(), calendar_}; }
    /// Opens the search index the first time.
    SearchCoordinator& search();
    /// The way to other machines; made the first time. Making it reaches nothing.
    HTTPTransport& network();
    /// The user's secrets of a service, such as `product::assistantSecretService`. Reading one may
    /// take seconds: not on the main thread.
    SecretStore& secrets(std::string_view service);
    SyncControl& syncControl();
    /// The service to sync with and the account there; null when none is set up. Both stay valid
    /// for what runs in the background.
    SyncService* sync();
    AccountSession* session();

    /// Saves the main context. When that fails the user is shown why over `parent`, every change is
    /// still pending, and the answer is false.
    bool save(QWidget* parent);

    /// Runs `work` on a thread of its own with a context of its own; it saves what it changes and
    /// looks at its token, which is stopped when the program ends. Then `done`, or with a sentence
    /// for the user `failed`, is called on the main thread, unless `receiver` or the environment is
    /// gone by then.
    using Work = std::function<void(StoreContext& context, std::stop_token stop)>;
    void inBackground(
        Work work,
        QObject* receiver,
        std::function<void()> done = {},
        std::function<void(const std::string& sentence)> failed = {});
    /// Waits until nothing runs in the background; what is to be called then is called by the event
    /// loop.
    void waitForBackground();

    /// Takes over zone, first day of the week and the day it is, if they have changed.
    void refreshCalendar();

signals:
    /// What a save changed: of this program's main context, of its background contexts, or of
    /// another process.
    void libraryChanged(const std::vector<tesserine::ObjectChange>& changes);
    /// A search may now find something else.
    void searchIndexChanged();
    /// The zone or the first day of the week was changed, or another day has begun.
    void calendarChanged();

private:
    Calendar currentCalendar() const;
    void bringSearchesOver();
    void careForLibrary();
    void returnMemorySoon();

    // Fixed after construction.
    AppSetting setting_;
    Log log_;
    Preferences preferences_;
    text::Collator collator_;

    Calendar calendar_;
    Instant today_;  // the beginning of the day that widgets believe it is
    NoteService notes_;
    NotebookService notebooks_;
    TagService tags_;
    SavedSearchService savedSearches_;
    PassageService passages_;
    TaskService tasks_;
    TaskTemplateService taskTemplates_;
    std::unique_ptr<mime::TypeRegistry> types_;
    std::unique_ptr<AttachmentService> attachments_;

    TesserineStore store_;
    std::unique_ptr<SearchCoordinator> search_;
    std::unique_ptr<HTTPTransport> network_;
    std::map<std::string, std::unique_ptr<SecretStore>, std::less<>> keychains_;
    std::unique_ptr<SyncControl> syncControl_;
    QTimer memoryTimer_;
    std::stop_source stop_;
    QThreadPool background_;
};

}  // namespace tesserine::app
