#include "core/store/TesserineStore.h"

#include "base/FailPoint.h"
#include "base/Files.h"
#include "core/store/ContextState.h"
#include "core/store/History.h"
#include "core/store/LibraryExchange.h"
#include "core/store/MergePolicy.h"
#include "core/store/RemoteChanges.h"
#include "core/store/StoreSchema.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <thread>

namespace tesserine {
namespace {

/// Moves the journal into the library's file; tells whether all of it was moved.
bool moveJournal(StoreCore& core, SQLiteDatabase::Checkpoint how) {
    try {
        const StoreCore::Writing writing = core.beginWriting();
        return writing.database().checkpoint(how);
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::saveFailed(StoreCore::explain(error));
    }
}

}  // namespace

std::filesystem::path StoreConfiguration::defaultDirectory(
    const std::optional<std::string>& dataHome, const std::filesystem::path& home) {
    // The desktop's rules: a relative value counts as none.
    if (dataHome && std::filesystem::path(*dataHome).is_absolute()) {
        return std::filesystem::path(*dataHome) / TesserineStore::containerName;
    }
    return home / ".local" / "share" / TesserineStore::containerName;
}

StoreConfiguration StoreConfiguration::forTests(
    const std::filesystem::path& temporary, Random& random) {
    const auto folder = temporary / ("TesserineTests-" + Uuid::random(random).text());
    files::createPrivateFolder(folder);
    return {.directory = folder};
}

/// What keeps the main context up to date with others.
struct TesserineStore::Observing {
    std::thread::id viewThread = std::this_thread::get_id();

    std::mutex mutex;  // guards what follows
    Executor executor;
    std::int64_t lastNumber = 0;
    Instant lastHistoryDate;
    std::deque<std::vector<ObjectChange>> waiting;  // saved elsewhere, not yet merged

    std::mutex readerMutex;  // guards what follows; taken after `StoreCore::reading`
    std::shared_ptr<SQLiteDatabase> reader;

    std::unique_ptr<SerialQueue> historyQueue;
    std::unique_ptr<RemoteChangeObserver> remoteChangeObserver;
};

TesserineStore::TesserineStore(
    StoreConfiguration configuration, const StoreEnvironment& environment)
    : core_(std::make_shared<StoreCore>(std::move(configuration), environment)),
      observing_(std::make_shared<Observing>()) {
    const Log& log = core_->log();
    if (core_->configuration().cloudKitContainerIdentifier) {
        log.info("a mirroring container was named and is ignored on this platform");
    }
    if (!core_->configuration().inMemory) schema::repairIndexes(core_->file(), log);
    viewContext_.reset(new StoreContext(
        core_, std::make_unique<ConflictPreservingMergePolicy>(log.category("merge"))));
    observing_->lastNumber = core_->numberAtOpening();
    observing_->lastHistoryDate = environment.clock.now();
    core_->subscribe([this](const auto& changes, const StoreContext* source) {
        if (source == viewContext_.get()) return;
        {
            const std::scoped_lock lock(observing_->mutex);
            observing_->waiting.push_back(changes);
        }
        if (std::this_thread::get_id() == observing_->viewThread) {
            mergeWaiting();
        } else {
            mergeSoon();
        }
    });
}

TesserineStore::~TesserineStore() {
    observing_->remoteChangeObserver.reset();
    observing_->historyQueue.reset();
    core_->unsubscribe();
    viewContext_.reset();
    core_->close(observing_->reader);
}

/// Has the main thread merge, where it can be told to. It may get to it when the store is gone.
void TesserineStore::mergeSoon() {
    Executor executor;
    {
        const std::scoped_lock lock(observing_->mutex);
        executor = observing_->executor;
    }
    if (!executor) return;
    executor([this, open = std::weak_ptr(observing_)] {
        if (!open.expired()) mergeWaiting();
    });
}

/// What cannot be merged, because the disk fails, waits for the next time.
void TesserineStore::mergeWaiting() {
    while (true) {
        std::vector<ObjectChange> next;
        {
            const std::scoped_lock lock(observing_->mutex);
            if (observing_->waiting.empty()) return;
            next = std::move(observing_->waiting.front());
            observing_->waiting.pop_front();
        }
        try {
            viewContext_->merge(next);
        } catch (const StoreError&) {
            const std::scoped_lock lock(observing_->mutex);
            observing_->waiting.push_front(std::move(next));
            core_->log().error("changes saved elsewhere could not be read");
            return;
        }
    }
}

StoreContext& TesserineStore::viewContext() { return *viewContext_; }

std::unique_ptr<StoreContext> TesserineStore::newBackgroundContext() {
    return std::unique_ptr<StoreContext>(new StoreContext(
        core_, std::make_unique<ConflictPreservingMergePolicy>(core_->log().category("merge"))));
}

void TesserineStore::startObserving(Executor executor) {
    {
        const std::scoped_lock lock(observing_->mutex);
        observing_->executor = std::move(executor);
    }
    if (core_->configuration().inMemory) return;
    observing_->remoteChangeObserver.reset();  // it uses the queue
    observing_->historyQueue = std::make_unique<SerialQueue>("historyQueue");
    const auto read = [this] {
        if (collectRemoteChanges()) mergeSoon();
    };
    observing_->remoteChangeObserver =
        std::make_unique<RemoteChangeObserver>(*core_, *observing_->historyQueue, read);
    observing_->historyQueue->async(read);  // what came between opening and now
}

void TesserineStore::processRemoteChanges() {
    collectRemoteChanges();
    mergeWaiting();
}

/// Reads the history after the last number merged; tells whether others committed anything. An
/// empty or failed reading changes nothing.
bool TesserineStore::collectRemoteChanges() {
    std::int64_t lastNumber = 0;
    {
        const std::scoped_lock lock(observing_->mutex);
        lastNumber = observing_->lastNumber;
    }
    std::vector<StoreTransaction> transactions;
    try {
        transactions = history(lastNumber);
    } catch (const StoreError&) {
        core_->log().error("the history could not be read");
        return false;
    }
    const std::scoped_lock lock(observing_->mutex);
    bool found = false;
    for (StoreTransaction& transaction : transactions) {
        if (transaction.number <= observing_->lastNumber) continue;
        observing_->lastNumber = transaction.number;
        observing_->lastHistoryDate = std::max(observing_->lastHistoryDate, transaction.timestamp);
        if (transaction.author == core_->author()) continue;  // merged when it was saved
        observing_->waiting.push_back(std::move(transaction.changes));
        found = true;
    }
    return found;
}

/// Reads from a connection of its own, so that any thread may ask.
template <class Read>
auto TesserineStore::readingHistory(Read read) const {
    return readingLibrary([&] {
        const auto guard = core_->reading();
        const std::scoped_lock lock(observing_->readerMutex);
        if (!observing_->reader) observing_->reader = core_->openReader();
        return read(*observing_->reader);
    });
}

std::vector<StoreTransaction> TesserineStore::history(
    std::int64_t number, std::size_t limit) const {
    return readingHistory(
        [&](SQLiteDatabase& reader) { return history::after(reader, number, limit); });
}

std::int64_t TesserineStore::lastTransactionNumber() const {
    return readingHistory([](SQLiteDatabase& reader) { return history::lastNumber(reader); });
}

bool TesserineStore::keepsHistoryAfter(std::int64_t number) const {
    return readingHistory(
        [&](SQLiteDatabase& reader) { return history::isCompleteAfter(reader, number); });
}

Instant TesserineStore::lastHistoryDate() const {
    const std::scoped_lock lock(observing_->mutex);
    return observing_->lastHistoryDate;
}

void TesserineStore::setHistoryMark(const std::string& name, std::int64_t number) {
    try {
        const StoreCore::Writing writing = core_->beginWriting();
        writing.database().transaction(
            [&] { history::setMark(writing.database(), name, number, core_->clock().now()); });
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::saveFailed(StoreCore::explain(error));
    }
}

std::optional<std::int64_t> TesserineStore::historyMark(const std::string& name) const {
    return readingHistory([&](SQLiteDatabase& reader) { return history::mark(reader, name); });
}

std::size_t TesserineStore::tidyUp() {
    try {
        const StoreCore::Writing writing = core_->beginWriting();
        SQLiteDatabase& database = writing.database();
        const std::int64_t number = history::lastPrunable(database, core_->clock().now());
        if (number > 0) database.transaction([&] { history::prune(database, number); });
        database.execute("PRAGMA optimize;");
        if (core_->configuration().inMemory) return 0;
        exchange::sweepArriving(core_->configuration().directory);
        files::sweepTemporaries(core_->configuration().directory);
        return core_->external().removeStrays(database);
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::saveFailed(StoreCore::explain(error));
    } catch (const FileError& error) {
        throw StoreError::saveFailed(StoreCore::explain(error));
    }
}

const StoreConfiguration& TesserineStore::configuration() const { return core_->configuration(); }

std::filesystem::path TesserineStore::file() const { return core_->file(); }

std::string TesserineStore::libraryID() const { return metadata("libraryID"); }

std::string TesserineStore::historyID() const { return metadata("historyID"); }

std::string TesserineStore::metadata(const std::string& name) const {
    return readingHistory([&](SQLiteDatabase& reader) {
        Statement& row = reader.cached("SELECT VALUE FROM Z_METADATA WHERE NAME = ?");
        row.bindText(1, name);
        std::string value = row.step() ? row.text(0).value_or("") : std::string();
        row.reset();
        return value;
    });
}

bool TesserineStore::wasCreated() const { return core_->wasCreated(); }

bool TesserineStore::wasEndedUncleanly() const { return core_->wasEndedUncleanly(); }

void TesserineStore::checkpoint() { moveJournal(*core_, SQLiteDatabase::Checkpoint::passive); }

bool TesserineStore::emptyJournal() {
    return moveJournal(*core_, SQLiteDatabase::Checkpoint::truncate);
}

}  // namespace tesserine
