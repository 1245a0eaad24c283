#include "core/store/StoreCore.h"

#include "base/FailPoint.h"
#include "base/Text.h"
#include "core/store/History.h"
#include "core/store/LibraryBackup.h"
#include "core/store/LibraryExchange.h"
#include "core/store/PredicateTree.h"
#include "core/store/StoreContext.h"
#include "core/store/StoreSchema.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace tesserine {
namespace {

constexpr int writerCacheKiB = 65'536;
constexpr int readerCacheKiB = 4'096;
constexpr const char* lockName = ".Tesserine.lock";
/// The journal is moved into the file once it has grown to this many pages (16 MB).
constexpr int checkpointPages = 2048;
/// SQLite's own locks are held for short moments only.
constexpr std::chrono::milliseconds busyPatience{5000};
constexpr const char* diskIsFull = "The disk is full. Free some space and try again.";
constexpr const char* mayNotWrite = "You are not allowed to write to it.";
constexpr const char* isBusy = "Another program has kept the library busy for too long. Try again.";

template <std::size_t... Index>
std::array<RowMapper, entityCount> makeMappers(std::index_sequence<Index...>) {
    return {RowMapper(Schema::library().entities()[Index])...};
}

std::string makeAuthor(const std::string& given, Random& random) {
    if (!given.empty()) return given;
    return "tesserine-" + std::to_string(::getpid()) + "-"
           + Uuid::random(random).text().substr(0, 8);
}

bool isPresent(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

std::uintmax_t sizeOf(const std::filesystem::path& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

std::filesystem::path withSuffix(std::filesystem::path path, const char* suffix) {
    path += suffix;
    return path;
}

}  // namespace

StoreCore::StoreCore(StoreConfiguration configuration, const StoreEnvironment& environment)
    : configuration_(std::move(configuration)),
      clock_(environment.clock),
      random_(environment.random),
      log_(environment.log.category("store")),
      author_(makeAuthor(environment.author, environment.random)),
      vfs_(environment.sqliteVFS),
      createIfMissing_(environment.createIfMissing),
      lockPatience_(environment.lockPatience),
      external_(configuration_.inMemory ? std::nullopt : std::optional(configuration_.directory)),
      mappers_(makeMappers(std::make_index_sequence<entityCount>{})) {
    try {
        if (configuration_.inMemory) {
            openInMemory();
        } else {
            openFile();
        }
        numberAtOpening_ = history::lastNumber(*writer_);
        isOpening_ = false;
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::loadFailed(explain(error));
    } catch (const FileError& error) {
        throw StoreError::loadFailed(explain(error));
    } catch (const BackupError& error) {
        throw StoreError::loadFailed(error.what());
    }
}

StoreCore::~StoreCore() {
    close(writer_);
    if (use_) use_->markClosed();
}

void StoreCore::openInMemory() {
    writer_ = connect(":memory:", SQLiteDatabase::Access::createIfMissing);
    schema::create(*writer_, random_);
    wasCreated_ = true;
}

void StoreCore::openFile() {
    if (createIfMissing_) files::createPrivateFolder(configuration_.directory);
    refuseFolder();
    const files::FolderLock lock = lockFolder();
    exchange::finish(configuration_.directory);
    if (!isPresent(file())) {
        createFile();
        wasCreated_ = true;
    }
    refuseUnreadable();
    noteUncleanEnd();
    examine();
    writer_ = connect(file(), SQLiteDatabase::Access::readWrite);
    backUpBeforeMigration();
    schema::migrate(*writer_, random_);
    identity_ = identify();
    use_->markOpen();
}

void StoreCore::refuseFolder() const {
    struct stat status {};
    if (::stat(configuration_.directory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        throw StoreError::loadFailed("There is no library in this folder.");
    }
    if (status.st_uid != ::geteuid() && ::geteuid() != 0) {
        throw StoreError::loadFailed("Its folder belongs to another user.");
    }
    if (::access(configuration_.directory.c_str(), R_OK | W_OK | X_OK) != 0) {
        throw StoreError::loadFailed(mayNotWrite);
    }
}

files::FolderLock StoreCore::lockFolder() const {
    auto lock = files::FolderLock::acquire(configuration_.directory / lockName, lockPatience_);
    if (lock) return std::move(*lock);
    throw StoreError::loadFailed(isBusy);
}

/// Made whole under another name first, so that a file of that name is always a library.
void StoreCore::createFile() {
    const bool isGone = LibraryUse::isKnown(configuration_.directory)
                        || isPresent(withSuffix(file(), "-wal")) || isPresent(*external_.folder());
    if (isGone) {
        throw StoreError::loadFailed(
            "The file " + std::string(TesserineStore::fileName)
            + " is missing from its folder, though a library was kept there. Put it back, or "
              "restore a backup.");
    }
    if (!createIfMissing_) throw StoreError::loadFailed("There is no library in this folder.");
    const auto making =
        exchange::arrivingName(configuration_.directory, Uuid::random(random_).text().substr(0, 8));
    try {
        files::writeNew(making, {});  // with a private mode, which SQLite gives its journals, too
        const auto database = connect(making, SQLiteDatabase::Access::readWrite);
        schema::create(*database, random_);
        FAIL_POINT("store.schemaMade");
    } catch (...) {
        for (const char* part : {"", "-wal", "-shm"}) {
            files::removeIfPresent(withSuffix(making, part));
        }
        throw;
    }
    files::syncFile(making);
    exchange::replaceLibrary(configuration_.directory, making, {});
    FAIL_POINT("store.created");
}

void StoreCore::refuseUnreadable() const {
    struct stat status {};
    if (::lstat(file().c_str(), &status) != 0) throw FileError::fromErrno(file(), "read", errno);
    if (!S_ISREG(status.st_mode)) {
        throw StoreError::loadFailed("“" + file().string() + "” is not a regular file.");
    }
    if (status.st_uid != ::geteuid() && ::geteuid() != 0) {
        throw StoreError::loadFailed("It belongs to another user.");
    }
    if (status.st_size == 0) {
        throw StoreError::loadFailed(
            "Its file is empty, so it is damaged. It was left as it is; restore a backup.");
    }
    const bool mayWrite = ::access(file().c_str(), R_OK | W_OK) == 0;
    if (!mayWrite) throw StoreError::loadFailed(mayNotWrite);
}

void StoreCore::noteUncleanEnd() {
    use_ = LibraryUse::share(configuration_.directory);
    const auto journal = withSuffix(file(), "-wal");
    wasEndedUncleanly_ =
        !wasCreated_ && use_->isFirst() && (use_->wasLeftOpen() || sizeOf(journal) > 0);
    if (!wasEndedUncleanly_) return;
    log_.warning("the library was not closed properly; checking it");
    if (!isPresent(journal)) log_.warning("its journal is gone, and with it the last changes");
}

/// Looks at the file before anything in it is changed; what is refused stays as it is.
void StoreCore::examine() const {
    SQLiteDatabase::Options careful = options(SQLiteDatabase::Access::readWrite);
    careful.journal = SQLiteDatabase::Journal::keep;
    careful.keepsLog = wasEndedUncleanly_;
    SQLiteDatabase database(file(), careful);
    if (!schema::isLibrary(database)) {
        throw StoreError::loadFailed(
            "Its file is not a library of Tesserine. It was left as it is; restore a backup.");
    }
    if (database.integer("PRAGMA user_version") > Schema::number) {
        throw StoreError::loadFailed("This library was written by a newer version of Tesserine.");
    }
    if (!wasEndedUncleanly_) return;
    if (database.text("PRAGMA quick_check(1)") != "ok") {
        throw StoreError::loadFailed(
            "Its file is damaged. It was left as it is; restore a backup.");
    }
    if (schema::hasForeignJournal(database)) {
        throw StoreError::loadFailed(
            "The journal beside its file, Tesserine.sqlite-wal, belongs to another library. Both "
            "were left as they are; put the right one back, or restore a backup.");
    }
}

SQLiteDatabase::Options StoreCore::options(SQLiteDatabase::Access access) const {
    const bool inMemory = configuration_.inMemory;
    return {
        .file = "library",
        .query = "Library query",
        .access = access,
        .journal = inMemory ? SQLiteDatabase::Journal::memory : SQLiteDatabase::Journal::wal,
        .synchronous = SQLiteDatabase::Synchronous::full,
        .busyTimeoutMilliseconds = static_cast<int>(std::min(lockPatience_, busyPatience).count()),
        .isHardened = true,
        .pageSize = 8192,
        .cacheKiB = writerCacheKiB,
        .autoCheckpointPages = checkpointPages,
        .vfs = inMemory ? std::string() : vfs_,
    };
}

std::unique_ptr<SQLiteDatabase> StoreCore::connect(
    const std::filesystem::path& file, SQLiteDatabase::Access access, Use use) const {
    SQLiteDatabase::Options chosen = options(access);
    if (use == Use::reading) chosen.cacheKiB = readerCacheKiB;
    auto database = std::make_unique<SQLiteDatabase>(file, chosen);
    database->registerTextFunction("ts_fold", text::caseFolded);
    database->registerTextPredicate("ts_contains", containsFolded);
    return database;
}

void StoreCore::backUpBeforeMigration() {
    if (wasCreated_ || schema::missingStatements(*writer_).empty()) return;
    log_.info("the library's schema is older than this program; making a backup first");
    const LibraryBackups backups(configuration_.directory, clock_, random_, log_);
    backups.createFrom(*this, "migration", std::nullopt, {});
}

StoreCore::Writing StoreCore::beginWriting() {
    Writing writing;
    writing.thread_ = std::unique_lock(writerMutex_, std::defer_lock);
    if (!writing.thread_.try_lock_for(lockPatience_)) {
        throw StoreError::saveFailed("The library has been busy for too long. Try again.");
    }
    if (!configuration_.inMemory) {
        refuseIfMoved();
        writing.process_ = lockForWriting();
        refuseIfMoved();
        if (!writer_) {
            writer_ = connect(file(), SQLiteDatabase::Access::readWrite);
            const Identity now = identify();  // its journal may have been made anew
            std::copy(now.begin() + 1, now.end(), identity_.begin() + 1);
        }
    }
    writing.database_ = writer_.get();
    return writing;
}

files::FolderLock StoreCore::lockForWriting() const {
    try {
        auto lock = files::FolderLock::acquire(configuration_.directory / lockName, lockPatience_);
        if (lock) return std::move(*lock);
    } catch (const FileError& error) {
        throw StoreError::saveFailed(explain(error));
    }
    throw StoreError::saveFailed(isBusy);
}

/// Nothing is written into a file that nobody will find again.
void StoreCore::refuseIfMoved() const {
    const Identity now = identify();
    // The journal stays as long as a connection is open.
    const bool isSame = writer_ ? now == identity_ : now.front() == identity_.front();
    if (isSame) return;
    throw StoreError::saveFailed(
        "The library's file was moved, replaced or deleted while Tesserine was using it. Put it "
        "back, or quit and open the library again.");
}

std::shared_ptr<SQLiteDatabase> StoreCore::openReader() {
    if (configuration_.inMemory) return writer_;
    if (!isOpening_ && identify().front() != identity_.front()) {
        throw StoreError::readFailed(
            "Its file was moved, replaced or deleted while Tesserine was using it.");
    }
    try {
        return connect(file(), SQLiteDatabase::Access::readWrite, Use::reading);
    } catch (const SQLiteDatabase::Error& error) {
        throw StoreError::readFailed(explain(error));
    }
}

std::unique_lock<std::recursive_timed_mutex> StoreCore::reading() {
    if (!configuration_.inMemory) return {};
    return std::unique_lock(writerMutex_);
}

void StoreCore::discardWriter() noexcept {
    if (!configuration_.inMemory) writer_.reset();
}

void StoreCore::close(std::shared_ptr<SQLiteDatabase>& connection) const noexcept {
    if (configuration_.inMemory || isOpening_ || !connection) {
        connection.reset();
        return;
    }
    try {
        const auto lock = files::FolderLock::acquire(
            configuration_.directory / lockName, std::chrono::milliseconds(1000));
        connection.reset();
    } catch (const std::exception&) {
        connection.reset();  // the next opening recovers what is left in the journal
    }
}

void StoreCore::publish(const std::vector<ObjectChange>& changes, const StoreContext* source) {
    const std::scoped_lock lock(followersMutex_);
    for (const auto& follower : followers_) {
        try {
            follower(changes, source);
        } catch (const std::exception& error) {
            // The save stands; only its news did not arrive.
            log_.error(std::string("a save could not be passed on: ") + error.what());
        }
    }
}

void StoreCore::subscribe(
    std::function<void(const std::vector<ObjectChange>&, const StoreContext*)> follower) {
    const std::scoped_lock lock(followersMutex_);
    followers_.push_back(std::move(follower));
}

void StoreCore::unsubscribe() {
    const std::scoped_lock lock(followersMutex_);
    followers_.clear();
}

std::filesystem::path StoreCore::file() const {
    return configuration_.directory / TesserineStore::fileName;
}

StoreCore::Identity StoreCore::identify() const {
    Identity identity{};
    std::size_t place = 0;
    for (const char* part : {"", "-wal", "-shm"}) {
        struct stat status {};
        if (::stat(withSuffix(file(), part).c_str(), &status) == 0) {
            identity[place] = {status.st_dev, status.st_ino};
        }
        ++place;
    }
    return identity;
}

std::string StoreCore::explain(const SQLiteDatabase::Error& error) {
    if (error.isFull()) return diskIsFull;
    if (error.isDamage()) {
        return "Its file is damaged or is not a library. It was left as it is; restore a backup.";
    }
    if (error.isReadOnly()) return mayNotWrite;
    if (error.isBusy()) return isBusy;
    if (error.isIOError()) {
        return "The disk reported an error (" + error.message()
               + "). Check the disk and try again.";
    }
    return "The database said: " + error.message() + ".";
}

std::string StoreCore::explain(const FileError& error) {
    return error.kind() == FileError::Kind::noSpace ? diskIsFull : error.what();
}

}  // namespace tesserine
